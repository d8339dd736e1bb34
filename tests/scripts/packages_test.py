"""install_packages, with stand-ins for apt-get, dpkg-query, sudo and id."""

import os
import shutil
import subprocess
import tempfile
import time
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))
TOOLS = ("bash", "cat", "date", "dirname", "basename", "env", "grep", "sed", "sh", "sleep", "sort",
         "mkdir", "rm")

# What the stand-ins do is told by files in the folder of which HOME is the name.
DPKG_QUERY = """
echo "dpkg-query $*" >>"$HOME/calls"
grep -qx -- "${@: -1}" "$HOME/installed" && echo installed
"""
APT_GET = """
echo "apt-get $*" >>"$HOME/calls"
verb=
for word; do case $word in update|install) verb=$word;; esac; done
if [ "$verb" = update ]; then
    if [ -s "$HOME/locked" ]; then
        sed -i 1d "$HOME/locked"
        echo "E: Could not get lock /var/lib/apt/lists/lock. It is held by process 1 (apt-get)"
        exit 100
    fi
    [ ! -e "$HOME/update-fails" ] || { cat "$HOME/update-fails"; exit 100; }
    exit 0
fi
if read -r line; then echo "somebody answers" >>"$HOME/calls"; fi
[ ! -e "$HOME/install-fails" ] || { echo "E: no such package"; exit 100; }
for word; do echo "$word"; done >>"$HOME/installed"
"""
SUDO = """
echo "sudo $*" >>"$HOME/calls"
[ ! -e "$HOME/sudo-refuses" ] || { echo "you are not in the sudoers file" >&2; exit 1; }
[ "$1" = -v ] || exec "$@"
"""
LIST = """# A comment.
with-commands first-command second-command  # both

library
"""


class PackagesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="quorvel-scripts-")
        self.addCleanup(folder.cleanup)
        self.home = folder.name
        self.bin = self.make_folder("bin")
        for name in TOOLS:
            os.symlink(shutil.which(name), os.path.join(self.bin, name))
        self.install("dpkg-query", DPKG_QUERY)
        self.install("apt-get", APT_GET)
        self.install("sudo", SUDO)
        self.install("id", "echo 0")
        library = self.make_folder("root/scripts/lib")
        for name in ("common.sh", "install-packages.sh"):
            shutil.copy(os.path.join(ROOT, "scripts/lib", name), library)
        self.make_folder("root/scripts/debian-packages")
        self.write("root/scripts/debian-packages/sample.txt", LIST)
        self.write("installed", "")

    def make_folder(self, name):
        path = os.path.join(self.home, name)
        os.makedirs(path)
        return path

    def write(self, name, text):
        with open(os.path.join(self.home, name), "w", encoding="utf-8") as file:
            file.write(text)

    def install(self, name, script="exit 0"):
        path = os.path.join(self.bin, name)
        self.write("bin/" + name, "#!/usr/bin/env bash\n" + script)
        os.chmod(path, 0o755)

    def remove(self, *names):
        for name in names:
            os.remove(os.path.join(self.bin, name))

    def be_somebody(self):
        self.install("id", "echo 1000")

    def run_it(self):
        script = 'set -euo pipefail; source "$1/lib/common.sh"; program=command\n' \
                 'source "$1/lib/install-packages.sh"; install_packages sample'
        return subprocess.run(
            ["bash", "-c", script, "bash", os.path.join(self.home, "root/scripts")],
            env={"PATH": self.bin, "HOME": self.home}, input="y\n", text=True, timeout=60,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def calls(self, program):
        try:
            with open(os.path.join(self.home, "calls"), encoding="utf-8") as file:
                return [line.strip() for line in file if line.startswith(program + " ")]
        except FileNotFoundError:
            return []

    def expect_success(self):
        result = self.run_it()
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result

    def expect_failure(self, *words):
        result = self.run_it()
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        for word in words:
            self.assertIn(word, result.stderr)
        return result

    def test_what_is_missing_is_installed_and_nothing_removed(self):
        self.expect_success()
        update, install = self.calls("apt-get")
        self.assertTrue(update.endswith(" update"), update)
        self.assertRegex(install, r" install --yes .*--no-remove.* library with-commands$")
        self.assertIn("DPkg::Lock::Timeout=", install)

    def test_nothing_is_asked_for_what_is_installed(self):
        self.write("installed", "with-commands\nlibrary\n")
        self.be_somebody()
        self.expect_success()
        self.assertEqual(self.calls("apt-get") + self.calls("sudo"), [])

    def test_commands_from_elsewhere_count(self):
        self.write("installed", "library\n")
        self.install("first-command")
        self.install("second-command")
        self.be_somebody()
        self.expect_success()
        self.assertEqual(self.calls("apt-get") + self.calls("sudo"), [])

    def test_one_of_two_commands_is_not_enough(self):
        self.write("installed", "library\n")
        self.install("first-command")
        self.expect_success()
        self.assertRegex(self.calls("apt-get")[-1], r" with-commands$")

    def test_a_system_without_apt_that_has_the_tools_is_fine(self):
        self.remove("dpkg-query", "apt-get", "sudo")
        self.install("first-command")
        self.install("second-command")
        self.be_somebody()
        self.expect_success()

    def test_a_system_without_apt_is_told_what_is_missing(self):
        self.remove("dpkg-query", "apt-get")
        self.install("first-command")
        self.expect_failure("with-commands", "no apt-get", "README")

    def test_without_root_and_sudo_the_command_is_named(self):
        self.be_somebody()
        self.remove("sudo")
        self.expect_failure("neither root nor sudo",
                            "apt-get install --no-install-recommends library with-commands")

    def test_who_may_not_use_sudo_is_told_so(self):
        self.be_somebody()
        self.write("sudo-refuses", "")
        self.expect_failure("sudo does not let you", "apt-get install")
        self.assertEqual(self.calls("apt-get"), [])

    def test_with_sudo_all_goes_through_it(self):
        self.be_somebody()
        self.expect_success()
        self.assertEqual(len(self.calls("sudo")), 3)
        self.assertEqual(len(self.calls("apt-get")), 2)

    def test_the_lists_lock_is_waited_for(self):
        self.write("locked", "once\ntwice\n")
        began = time.monotonic()
        result = self.expect_success()
        self.assertGreater(time.monotonic() - began, 2)
        self.assertEqual(result.stderr.count("waiting"), 1)

    def test_a_broken_archive_does_not_matter_when_the_package_is_elsewhere(self):
        self.write("update-fails", "E: The repository 'http://broken.example' is not signed.")
        result = self.expect_success()
        self.assertNotIn("broken.example", result.stderr)

    def test_without_the_network_the_reason_is_told(self):
        self.write("update-fails", "W: Failed to fetch http://archive.example")
        self.write("install-fails", "")
        self.expect_failure("archive.example", "network")

    def test_an_update_that_failed_is_noticed(self):
        self.expect_success()
        self.assertIn("APT::Update::Error-Mode=any", self.calls("apt-get")[0])

    def test_a_disc_is_named_as_the_reason(self):
        self.write("update-fails", "E: The repository 'cdrom://[Debian] bookworm Release' ...")
        self.write("install-fails", "")
        self.expect_failure("disc", "cdrom:")

    def test_when_only_installing_fails_the_lists_are_not_blamed(self):
        self.write("install-fails", "")
        result = self.expect_failure("cannot install library with-commands")
        self.assertNotIn("network", result.stderr)

    def test_apt_finds_nobody_to_answer_its_questions(self):
        self.expect_success()
        with open(os.path.join(self.home, "calls"), encoding="utf-8") as file:
            self.assertNotIn("somebody answers", file.read())


class ListsTest(unittest.TestCase):
    """The real lists."""

    def test_each_is_asked_for_by_some_command(self):
        names = os.listdir(os.path.join(ROOT, "scripts/debian-packages"))
        commands = subprocess.run(
            ["grep", "-rhE", "install_packages|packages\\+?=", "--exclude-dir=build",
             *(os.path.join(ROOT, name) for name in ("benchmark", "run", "test", "package", "scripts"))],
            text=True, stdout=subprocess.PIPE, check=True).stdout
        for name in names:
            self.assertRegex(commands, rf"[ (]{name.removesuffix('.txt')}\b")

    def test_only_lists_that_exist_are_asked_for(self):
        for place, _, names in os.walk(os.path.join(ROOT, "scripts")):
            for name in names:
                with open(os.path.join(place, name), encoding="utf-8") as file:
                    for line in file:
                        words = line.split()
                        if words[:1] == ["install_packages"] and "$" not in line:
                            for word in words[1:]:
                                self.assertTrue(os.path.exists(os.path.join(
                                    ROOT, "scripts/debian-packages", word + ".txt")), line)


if __name__ == "__main__":
    unittest.main(verbosity=2)
