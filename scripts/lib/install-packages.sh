# Debian packages, by the lists in scripts/debian-packages. Needs common.sh.
# shellcheck shell=bash

# install_packages LIST...: installs what is missing of the lists, and never removes anything.
# Without anything missing it needs neither the network nor root. Other systems are left alone:
# whoever looks for what they lack, tells.
install_packages()
{
    command -v dpkg-query >/dev/null || return 0
    local wanted missing
    local -a apt=(env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300)
    wanted=$(cd "$root/scripts/debian-packages" && cat "${@/%/.txt}" | sed '/^#/d' | sort -u)
    # shellcheck disable=SC2086 # words
    missing=$(comm -23 <(echo "$wanted") <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' \
        $wanted 2>/dev/null | sed -n 's/^installed //p' | sort -u))
    [[ -n $missing ]] || return 0
    note "Installing ${missing//$'\n'/ }"
    if [[ $(id -u) != 0 ]]; then
        command -v sudo >/dev/null || die "neither root nor sudo is at hand; as root:" \
            "apt-get install --no-install-recommends ${missing//$'\n'/ }"
        apt=(sudo "${apt[@]}")
    fi
    # A machine that has just started may be busy with its lists, for which apt does not wait. An
    # archive out of reach does not matter when what is wanted comes from another.
    "${apt[@]}" update || { sleep 30 && "${apt[@]}" update; } || true
    # shellcheck disable=SC2086
    "${apt[@]}" install --yes --no-install-recommends --no-remove $missing </dev/null ||
        die "cannot install ${missing//$'\n'/ }: see above; nothing is ever removed for it"
}
