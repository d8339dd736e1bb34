# Debian packages, by the lists in scripts/debian-packages. Needs common.sh.
# shellcheck shell=bash

# packages_of LIST...: the package names of scripts/debian-packages/LIST.txt, one per line.
packages_of()
{
    local list
    for list in "$@"; do
        sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$root/scripts/debian-packages/$list.txt"
    done
}

missing_packages()
{
    local -a wanted
    mapfile -t wanted < <(packages_of "$@")
    comm -23 <(printf '%s\n' "${wanted[@]}" | LC_ALL=C sort -u) \
        <(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null |
            sed -n 's/ installed$//p' | LC_ALL=C sort -u)
}

# install_packages LIST...: installs what is missing of the lists. Without anything missing it
# needs neither the network nor root.
install_packages()
{
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
        die "this is not a Debian-like system (no apt-get); see README.md for what is needed"
    local -a missing as_root=()
    mapfile -t missing < <(missing_packages "$@")
    ((${#missing[@]} > 0)) || return 0
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            die "cannot install ${missing[*]}: neither root nor sudo is at hand"
        as_root=(sudo)
    fi
    note "Installing ${missing[*]}"
    local -a apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive
        apt-get -o DPkg::Lock::Timeout=300)
    "${apt[@]}" update || die "apt-get update failed"
    "${apt[@]}" install --yes --no-install-recommends "${missing[@]}" ||
        die "cannot install ${missing[*]}"
}
