# QUORVEL_COVERAGE: ON builds with counters that tell which lines and branches were run.
option(QUORVEL_COVERAGE "Count which lines and branches are run" OFF)

if(QUORVEL_COVERAGE)
    # Threads count as well, and must not lose each other's counts.
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
endif()
