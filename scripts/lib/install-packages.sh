# Debian packages, by the lists in scripts/debian-packages. Needs common.sh.
# shellcheck shell=bash

# A line of a list is a package and, where these tell whether it is there, its commands.

# packages_of LIST...: the lines of the lists, without comments.
packages_of()
{
    local list
    for list in "$@"; do
        sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$root/scripts/debian-packages/$list.txt"
    done
}

has_commands()
{
    local name
    (($# > 0)) || return 1
    for name in "$@"; do
        command -v "$name" >/dev/null || return 1
    done
}

is_installed()
{
    dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

# missing_packages LIST...: what is neither installed nor, by its commands, there in another way.
# Where Debian's packages are unknown, what has no command counts as there: CMake will tell.
missing_packages()
{
    local package commands
    packages_of "$@" | sort -u | while read -r package commands; do
        # shellcheck disable=SC2086 # words
        if has_commands $commands; then
            continue
        elif command -v dpkg-query >/dev/null; then
            is_installed "$package" || echo "$package"
        elif [[ -n $commands ]]; then
            echo "$package"
        fi
    done
}

# update_package_lists: prints what apt has to say when that fails. Two of them at a time are one
# too many, and unlike for installing apt does not wait.
update_package_lists()
{
    local output end=$((SECONDS + 300)) told=false
    until output=$("$@" -o APT::Update::Error-Mode=any update 2>&1 </dev/null); do
        if [[ $output != *"Could not get lock"* ]] || ((SECONDS > end)); then
            printf '%s\n' "$output"
            return 1
        fi
        $told || note "Another program is busy with apt's lists; waiting for it" >&2
        told=true
        sleep 1
    done
}

# install_packages LIST...: installs what is missing of the lists, and never removes anything.
# Without anything missing it needs neither the network nor root nor Debian.
install_packages()
{
    local -a missing as_root=()
    mapfile -t missing < <(missing_packages "$@")
    ((${#missing[@]} > 0)) || return 0
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
        die "not found: what Debian has in ${missing[*]}; this system has no apt-get to install it" \
            "with (README.md tells what is needed)"
    local by_hand="as root: apt-get install --no-install-recommends ${missing[*]}"
    if [[ $(id -u) != 0 ]]; then
        command -v sudo >/dev/null ||
            die "cannot install ${missing[*]}: neither root nor sudo is at hand; $by_hand"
        sudo -v ||
            die "cannot install ${missing[*]}: sudo does not let you; $by_hand"
        as_root=(sudo)
    fi
    note "Installing ${missing[*]}"
    local -a apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive LC_ALL=C
        apt-get -o DPkg::Lock::Timeout=300)
    # An archive out of reach does not matter when what is wanted comes from another.
    local complaint=
    complaint=$(update_package_lists "${apt[@]}") || true
    "${apt[@]}" install --yes --no-install-recommends --no-remove "${missing[@]}" </dev/null &&
        return 0
    if [[ -n $complaint ]]; then
        printf '%s\n' "$complaint" >&2
        [[ $complaint != *cdrom:* ]] ||
            note "apt wants a disc; take the line with cdrom: out of its sources" >&2
        die "cannot install ${missing[*]}: the package lists could not be brought up to date (see" \
            "above; is there a network?)"
    fi
    die "cannot install ${missing[*]}: see above; nothing is ever removed for it"
}
