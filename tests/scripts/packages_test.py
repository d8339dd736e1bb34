"""install_packages, with stand-ins for apt-get, dpkg-query, id and sudo."""

import os
import subprocess
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))
FAKES = {
    "dpkg-query": 'for name; do grep -Ex "[a-z]+ $name" "$HOME/state"; done; exit 1',
    "apt-get": 'echo "apt-get $*" >>"$HOME/calls"',
    "sudo": 'echo "sudo $*" >>"$HOME/calls"; exec "$@"',
    "id": 'cat "$HOME/user"',
}


class PackagesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="quorvel-scripts-")
        self.addCleanup(folder.cleanup)
        self.home = folder.name
        for name, script in FAKES.items():
            self.write(name, "#!/bin/sh\n" + script)
            os.chmod(os.path.join(self.home, name), 0o755)
        self.write("user", "0")
        self.write("calls", "")
        self.write("state", "")

    def write(self, name, text):
        with open(os.path.join(self.home, name), "w", encoding="utf-8") as file:
            file.write(text)

    def install(self, *lists):
        done = subprocess.run(
            ["bash", "-c", 'set -euo pipefail; source "$0/scripts/lib/common.sh"\n'
             'source "$0/scripts/lib/install-packages.sh"; install_packages "$@"', ROOT, *lists],
            env={"PATH": self.home + ":/usr/bin:/bin", "HOME": self.home}, text=True, timeout=60,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        with open(os.path.join(self.home, "calls"), encoding="utf-8") as file:
            return done, file.read().splitlines()

    def test_what_is_missing_is_installed_and_nothing_removed(self):
        self.write("state", "installed zip\ndeinstalled unzip\ninstalled nsis\ninstalled git\n")
        done, calls = self.install("windows-package")
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertEqual(len(calls), 2)
        self.assertRegex(calls[0], " update$")
        self.assertRegex(calls[1], " install --yes .*--no-remove python3-markdown unzip$")

    def test_apt_is_not_asked_for_what_is_installed(self):
        self.write("state", "installed gcovr\ninstalled icoutils\ninstalled librsvg2-bin\n"
                            "installed optipng\n")
        done, calls = self.install("coverage", "icons")
        self.assertEqual((done.returncode, done.stdout, calls), (0, "", []))

    def test_with_sudo_all_goes_through_it(self):
        self.write("user", "1000")
        done, calls = self.install("coverage")
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertEqual([call.split()[0] for call in calls], ["sudo", "apt-get"] * 2)

    def test_a_list_that_does_not_exist_is_a_mistake(self):
        done, calls = self.install("coverage", "nonsense")
        self.assertNotEqual(done.returncode, 0)
        self.assertEqual(calls, [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
