"""What the commands know of builds, of the private Windows and of the checkout, each with a little
project in the place of ours."""

import json
import os
import shutil
import subprocess
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))


class CheckoutTest(unittest.TestCase):
    """A checkout of its own, below a name that needs care."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="quorvel-scripts-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.root = os.path.join(self.folder, "Quorvel Prüfung 面板")
        shutil.copytree(os.path.join(ROOT, "scripts"), os.path.join(self.root, "scripts"))
        self.environment = {name: value for name, value in os.environ.items()
                            if not name.startswith(("QUORVEL_", "CMAKE_", "GIT_"))
                            and name != "SOURCE_DATE_EPOCH"}

    def write(self, name, text, mode=0o644):
        path = os.path.join(self.root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, mode)

    def command(self, script, *libraries):
        lines = ["set -euo pipefail"]
        lines += [f'source "$1/scripts/lib/{name}.sh"' for name in ("common", *libraries)]
        return ["bash", "-c", "\n".join([*lines, script]), "bash", self.root]

    def run_script(self, script, *libraries, **variables):
        return subprocess.run(self.command(script, *libraries), text=True, timeout=100,
                              env={**self.environment, **variables},
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


class BuildTest(CheckoutTest):
    def setUp(self):
        super().setUp()
        self.write("CMakeLists.txt", """
cmake_minimum_required(VERSION 3.25)
project(Sample VERSION 1.2.3 LANGUAGES NONE)
file(WRITE ${PROJECT_BINARY_DIR}/result "${SAMPLE_CHOICE} ${SAMPLE_EXTRA} ${SAMPLE_QT}\\n")
add_custom_target(sample ALL COMMAND ${CMAKE_COMMAND} -E touch built VERBATIM)
""")
        self.write_presets(SAMPLE_CHOICE="one")

    def write_presets(self, **variables):
        base = {"generator": "Ninja", "binaryDir": "${sourceDir}/build/${presetName}"}
        windows = {"SAMPLE_QT": "$env{QUORVEL_QT_WINDOWS}"}
        self.write("CMakePresets.json", json.dumps({"version": 6, "configurePresets": [
            {"name": "debug", "cacheVariables": variables, **base},
            {"name": "windows", "cacheVariables": windows, **base}]}))

    def build(self, preset="debug", **variables):
        result = self.run_script(f"build_preset {preset}", "build", **variables)
        self.assertEqual(result.returncode, 0, result.stdout)
        return "Configuring" in result.stdout

    def result(self, preset="debug"):
        with open(os.path.join(self.root, "build", preset, "result"), encoding="utf-8") as file:
            return file.read().split()

    def test_a_folder_is_configured_anew_when_what_it_depends_on_changes(self):
        self.write_presets(SAMPLE_CHOICE="one", SAMPLE_EXTRA="more")
        self.assertTrue(self.build())
        self.assertEqual(self.result(), ["one", "more"])
        self.assertFalse(self.build())
        self.write_presets(SAMPLE_CHOICE="two")
        lists = os.path.join(self.root, "CMakeLists.txt")
        os.rename(lists, lists + ".away")
        self.assertNotEqual(self.run_script("build_preset debug", "build").returncode, 0)
        os.rename(lists + ".away", lists)
        self.assertTrue(self.build())
        self.assertEqual(self.result(), ["two"], "something of the old is left")

    def test_another_qt_for_windows_is_noticed(self):
        self.assertTrue(self.build("windows", QUORVEL_QT_WINDOWS="/qt/one"))
        self.assertTrue(self.build("windows", QUORVEL_QT_WINDOWS="/qt/two"))
        self.assertEqual(self.result("windows"), ["/qt/two"])

    def test_two_commands_do_not_work_in_one_folder_at_a_time(self):
        holder = subprocess.Popen(
            self.command("lock_build debug; echo locked; until [[ -e $root/heard ]]; do sleep 0.05; "
                         "done; echo free >\"$root/order\"", "build"),
            text=True, env=self.environment, stdout=subprocess.PIPE)
        self.addCleanup(holder.stdout.close)
        self.addCleanup(holder.wait)
        self.addCleanup(holder.kill)
        self.assertEqual(holder.stdout.readline(), "locked\n")
        waiting = subprocess.Popen(self.command("lock_build debug; cat \"$root/order\"", "build"),
                                   text=True, env=self.environment, stdout=subprocess.PIPE)
        self.assertIn("waiting", waiting.stdout.readline())
        self.write("heard", "")
        self.assertEqual(waiting.communicate(timeout=60)[0], "free\n")
        self.assertEqual(waiting.returncode, 0)


class PrivateWindowsTest(CheckoutTest):
    def setUp(self):
        super().setUp()
        self.tools = os.path.join(self.folder, "bin")
        self.environment["PATH"] = self.tools + ":" + self.environment["PATH"]
        self.install_wine("wine-8.0")

    def install_wine(self, version):
        os.makedirs(self.tools, exist_ok=True)
        for name in ("wine", "wineserver"):
            path = os.path.join(self.tools, name)
            with open(path, "w", encoding="utf-8") as file:
                file.write(f'#!/bin/sh\nif [ "$1" = --version ]; then echo {version}\n'
                           'else mkdir -p "$WINEPREFIX/drive_c/windows"; fi\n')
            os.chmod(path, 0o755)

    def make(self):
        return self.run_script('use_wine "$root/windows"; make_wine_once', "wine")

    def test_it_is_made_anew_for_another_wine_and_another_recipe(self):
        self.assertIn("Making", self.make().stdout)
        self.assertEqual(self.make().stdout, "")
        self.install_wine("wine-9.0")
        self.assertIn("Making", self.make().stdout)
        with open(os.path.join(self.root, "scripts/lib/wine.sh"), "a", encoding="utf-8") as file:
            file.write("# changed\n")
        self.assertIn("Making", self.make().stdout)

    def test_what_was_only_half_made_is_made_anew(self):
        self.make()
        windows = os.path.join(self.root, "windows")
        os.rename(os.path.join(windows, "quorvel-ready"), os.path.join(windows, "quorvel-making"))
        self.assertIn("Making", self.make().stdout)

    def test_what_a_copy_writes_stays_there(self):
        names = ("user.reg", "drive_c/users/letter", "drive_c/windows/some.exe",
                 "drive_c/windows/system32/some.dll")
        for name in names:
            self.write("windows/" + name, "first")
        result = self.run_script('copy_wine "$root/windows" "$root/copy"', "wine")
        self.assertEqual(result.returncode, 0, result.stdout)
        for name in names:
            place, copy = (os.path.join(self.root, folder, name) for folder in ("windows", "copy"))
            self.assertEqual(os.path.samefile(place, copy), name.endswith(".dll"), name)

    def test_a_folder_of_somebody_elses_is_left_alone(self):
        self.write("windows/letter", "dear")
        result = self.make()
        self.assertEqual(result.returncode, 1)
        self.assertTrue(os.path.exists(os.path.join(self.root, "windows/letter")))


class PackageTest(CheckoutTest):
    """./package up to the point where Qt for Windows is looked for."""

    def setUp(self):
        super().setUp()
        shutil.copy(os.path.join(ROOT, "package"), self.root)
        self.write("scripts/lib/install-packages.sh", "install_packages() { :; }\n")
        self.write("scripts/windows/build-qt-for-windows",
                   '#!/bin/sh\necho "building with time $SOURCE_DATE_EPOCH" >&2\nexit 9\n', 0o755)
        self.environment["GIT_CEILING_DIRECTORIES"] = self.folder

    def package(self, **variables):
        return subprocess.run([os.path.join(self.root, "package")], text=True, timeout=60,
                              env={**self.environment, **variables},
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout

    def commit(self):
        moment = "2025-10-09T12:00:00Z"
        for arguments in (["init", "-q"], ["add", "package"],
                          ["-c", "user.name=A", "-c", "user.email=a@b", "commit", "-qm", "First"]):
            subprocess.run(["git", "-C", self.root, *arguments], check=True,
                           env={**self.environment, "GIT_COMMITTER_DATE": moment,
                                "GIT_AUTHOR_DATE": moment})

    def test_without_git_it_says_so_before_anything_is_built(self):
        output = self.package()
        self.assertIn("not a Git checkout", output)
        self.assertNotIn("building", output)

    def test_the_time_is_that_of_the_commit_whoever_owns_the_checkout(self):
        self.commit()
        self.assertIn("time 1760011200", self.package(GIT_TEST_ASSUME_DIFFERENT_OWNER="1"))

    def state(self, **variables):
        result = self.run_script("state_of_package", "build", **{"QUORVEL_QT_WINDOWS": "/qt",
                                                                 **variables})
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def test_all_that_changes_a_package_changes_its_state(self):
        self.commit()
        self.write("src/main.cpp", "int main() {}\n")
        states = [self.state(), self.state(SOURCE_DATE_EPOCH="86400"),
                  self.state(QUORVEL_QT_WINDOWS="/other"), self.state(QUORVEL_SIGN="/sign")]
        self.write("src/main.cpp", "int main() { return 1; }\n")
        states.append(self.state())
        os.rename(os.path.join(self.root, "src/main.cpp"), os.path.join(self.root, "src/app.cpp"))
        states.append(self.state())
        self.assertEqual(len(set(states)), 6)
        self.assertEqual(self.state(), states[-1])


if __name__ == "__main__":
    unittest.main(verbosity=2)
