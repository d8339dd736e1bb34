#include "simulator/host_native/host_options.h"

#include "simulator/client/product_ids.h"
#include "simulator/model/simulator_protocol.h"

#include <string_view>

const char* const hostHelp =
    R"(Usage: quorvel-simulator [options]

Serves a simulated USB audio interface until it is told to stop (SIGTERM, SIGINT). It prints one
line "ready" when programs can open it. quorvel-simctl steers it.

  --model MODEL         plug in at the start: ka1, ka2, ks or a product id
  --bus N               at bus N, 0 to 15 (0)
  --moving-levels       the level meters rise and fall by themselves
  --until-stdin-closes  stop when the standard input reaches its end
  --help                show this text

Environment: QUORVEL_RUNTIME_DIR names the private folder of the sockets; without it
$XDG_RUNTIME_DIR/quorvel or /tmp/quorvel-<user number>.
)";

namespace {

/// Reads the option's value into `options`.
bool takeValue(HostOptions& options, std::string_view option, std::string_view value)
{
    if (option == "--model") {
        options.productId = parseProductId(value);
        return options.productId.has_value();
    }
    const std::optional<std::uint32_t> bus = parseNumber(value);
    options.bus = bus.value_or(0);
    return bus.has_value() && *bus < SIM_BUSES;
}

} // namespace

std::optional<HostOptions> parseHostOptions(int argc, char** argv, std::string& problem)
{
    HostOptions options;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "--help") {
            options.help = true;
        } else if (option == "--moving-levels") {
            options.movingLevels = true;
        } else if (option == "--until-stdin-closes") {
            options.untilInputCloses = true;
        } else if (option == "--model" || option == "--bus") {
            const std::string value = ++i < argc ? argv[i] : "";
            if (!takeValue(options, option, value)) {
                problem = option;
                problem.append(" cannot be '").append(value).append("'");
                return std::nullopt;
            }
        } else {
            problem = "unknown option '" + option + "'";
            return std::nullopt;
        }
    }
    return options;
}
