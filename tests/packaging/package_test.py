"""What the packages say of the program, and what the program says of itself on the command line. Reads
the folder of the sources and runs VELOMIND_BINARY, which is part of an installed tree, without a
display."""

import json
import os
import re
import subprocess
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BINARY = os.environ["VELOMIND_BINARY"]
SHARE = os.path.join(os.path.dirname(os.path.dirname(BINARY)), "share")
ID = "org.example.velomind"
MAKER = "Ostrel"


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


def run(*words, language="en"):
    environment = {name: value for name, value in os.environ.items()
                   if name not in ("DISPLAY", "WAYLAND_DISPLAY", "GDK_BACKEND")}
    environment.update(LC_ALL="C.UTF-8", LANGUAGE=language, HOME="/nonexistent")
    return subprocess.run([BINARY, *words], env=environment, stdin=subprocess.DEVNULL, text=True,
                          capture_output=True, timeout=60, check=False)


def complete(*words):
    """What the shell offers for the last of these words."""
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); compopt() { :; }; '
              '_velomind; printf "%s\\n" "${COMPREPLY[@]}"')
    completion = os.path.join(SHARE, "bash-completion", "completions", "velomind")
    return subprocess.run(["bash", "-c", script, "bash", completion, "velomind", *words], text=True,
                          capture_output=True, check=True).stdout.split()


class PackageTest(unittest.TestCase):
    def test_desktops_know_the_program_by_one_id(self):
        for folder, name in (("applications", f"{ID}.desktop"), ("metainfo", f"{ID}.metainfo.xml"),
                             ("mime/packages", f"{ID}.xml"),
                             ("icons/hicolor/scalable/apps", f"{ID}.svg"),
                             *((f"icons/hicolor/{size}x{size}/apps", f"{ID}.png")
                               for size in (16, 32, 48, 64, 128))):
            self.assertTrue(os.path.isfile(os.path.join(SHARE, folder, name)), name)
        self.assertIn(f"\nIcon={ID}\n", read(SHARE, "applications", f"{ID}.desktop"))
        metainfo = read(SHARE, "metainfo", f"{ID}.metainfo.xml")
        for line in (f"<id>{ID}</id>", f'<launchable type="desktop-id">{ID}.desktop</launchable>',
                     f'<icon type="stock">{ID}</icon>', f"<developer_name>{MAKER}</developer_name>"):
            self.assertIn(line, metainfo)
        self.assertIn(f'<icon name="{ID}"/>', read(SHARE, "mime", "packages", f"{ID}.xml"))

    def test_one_maker_and_one_release_stand_everywhere(self):
        maker = f"{MAKER} <support@example.org>"
        changelog = read(ROOT, "debian", "changelog")
        self.assertIn(f"\n -- {maker}  ", changelog)
        self.assertIn(f"\nMaintainer: {maker}\n", read(ROOT, "debian", "control"))
        self.assertIn(f"\nUpstream-Contact: {maker}\n", read(ROOT, "debian", "copyright"))
        holder = re.search(r"Copyright \(c\) (.*)", read(ROOT, "LICENSE")).group(1)
        self.assertIn(f"\nCopyright: {holder}\n", read(ROOT, "debian", "copyright"))
        self.assertTrue(holder.endswith(MAKER))
        release = re.match(r"velomind \(([0-9.]+)-", changelog).group(1)
        self.assertIn(f'<release version="{release}"', read(SHARE, "metainfo", f"{ID}.metainfo.xml"))
        self.assertIn(release, run("--version").stdout)

    def test_the_flatpak_manifest_has_its_form(self):
        manifest = json.loads(read(ROOT, "packaging", f"{ID}.json"))
        self.assertEqual((ID, "velomind"), (manifest["id"], manifest["command"]))
        self.assertLessEqual({"runtime", "runtime-version", "sdk", "finish-args"}, set(manifest))
        self.assertEqual("velomind", manifest["modules"][-1]["name"])
        for module in manifest["modules"]:
            self.assertEqual("cmake-ninja", module["buildsystem"])
            for source in module["sources"]:
                needed = {"git": {"url", "tag"}, "dir": {"path"}}[source["type"]]
                self.assertLessEqual(needed, set(source), module["name"])
        ours = os.path.join(ROOT, "packaging", manifest["modules"][-1]["sources"][0]["path"])
        self.assertTrue(os.path.samefile(ours, ROOT))


class CommandLineTest(unittest.TestCase):
    def test_help_and_version_need_no_display(self):
        texts = set()
        for language in ("en", "de", "ja"):
            for option in ("--help", "-h"):
                done = run(option, language=language)
                self.assertEqual((0, ""), (done.returncode, done.stderr))
                texts.add(done.stdout)
            # An installer's options are taken, but no person needs them.
            self.assertNotIn("shortcut", done.stdout)
        self.assertEqual(3, len(texts))
        done = run("--version", "--verbose")
        self.assertEqual((0, ""), (done.returncode, done.stderr))
        self.assertRegex(done.stdout, r"^Velomind Mobile [0-9.]+\n$")
        # Here the word is what a message box is to show, for which there is no display.
        self.assertEqual((1, ""), (run("--messagebox", "--help").returncode,
                                   run("--messagebox", "--help").stdout))

    def test_help_man_pages_and_completion_tell_of_the_same_options(self):
        told = set(re.findall(r"^  (?:-h, )?(--[-\w]+)", run("--help").stdout, re.MULTILINE))
        self.assertGreater(len(told), 5)
        self.assertEqual(told, {word.split("=")[0] for word in complete("--")})
        for language in ("", "de", "ja"):
            page = read(SHARE, "man", language, "man1", "velomind.1").replace("\\-", "-")
            told_there = re.findall(r"^\.TP\n\\fB(?:-h\\fR, \\fB)?(--[-\w]+)", page, re.MULTILINE)
            self.assertEqual(told, set(told_there), language)

    def test_the_shell_completes_options_and_files(self):
        for words, offered in ((("--im",), ["--import="]),
                               (("--import", "=", "/etc/os-r"), ["/etc/os-release"]),
                               (("--import", "/etc/os-r"), ["/etc/os-release"]),
                               (("/etc/os-r",), ["/etc/os-release"]),
                               (("--messagebox", "=", "/etc/os-r"), []),
                               (("--v",), ["--version", "--verbose"])):
            self.assertEqual(offered, complete(*words), words)


if __name__ == "__main__":
    unittest.main()
