# A folder of one's own that leaves nothing behind. Needs common.sh.
# shellcheck shell=bash

# remove_shared_marks FOLDER: removes the System V segments and semaphores that belong to key
# files below the folder. The panel's single-instance marker is of this kind, and a panel that
# was killed leaves it behind. The lower three bytes of such a key are made from its file.
remove_shared_marks()
{
    local device inode suffix kind key id
    while read -r device inode; do
        printf -v suffix '%02x%04x' $((device & 0xff)) $((inode & 0xffff))
        for kind in m s; do
            while read -r key id _; do
                [[ $key == 0x??"$suffix" ]] && ipcrm "-$kind" "$id" 2>/dev/null || true
            done < <(ipcs "-$kind")
        done
    done < <(find "$1" -name 'qipc_*' -printf '%D %i\n' 2>/dev/null)
}

# make_private_folder: prints the name of a new folder that only its owner can enter.
make_private_folder()
{
    mktemp -d "${TMPDIR:-/tmp}/quorvel.XXXXXXXX"
}

remove_private_folder()
{
    remove_shared_marks "$1"
    rm -rf -- "$1"
}
