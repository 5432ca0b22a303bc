#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What shells complete of command lines of plex, and its man pages: all that `--help` names is there.

    test_completion.py CASE   with the variables of test_plex.py, and PLEX_TEXTS, the folder of scripts and pages
"""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

from test_plex import PATIENCE, PROGRAMS, PlexTest, run

TEXTS = pathlib.Path(os.environ["PLEX_TEXTS"])
SCRIPTS = {"bash": "bash/plex", "fish": "fish/plex.fish", "zsh": "zsh/_plex"}


def shell(name, program):
    """Runs a program of a shell, which finds plex. Returns its output."""
    environment = {**os.environ, "PATH": f"{PROGRAMS}:{os.environ['PATH']}", "HOME": "/nonexistent"}
    plain = {"bash": ["--norc"], "fish": ["--no-config"], "zsh": ["-f"]}[name]
    done = subprocess.run([name, *plain, "-c", program], capture_output=True, text=True, timeout=PATIENCE,
                          env=environment, check=True)
    return done.stdout


def script(name):
    return TEXTS / SCRIPTS[name]


def commands():
    """All that `plex --help` names."""
    output, _, _ = run("--help")
    part = re.split(r"^\S*subcommands:.*\n", output, flags=re.IGNORECASE | re.MULTILINE)[1]
    return re.findall(r"^  ([a-z]\S*) ", part, re.MULTILINE)


def options(command):
    """All options that `plex COMMAND --help` names."""
    output, _, _ = run(command, "--help")
    heads = re.findall(r"^  (-.*?)(?:  |$)", output, re.MULTILINE)
    return [name for head in heads for name in re.findall(r"(?:^|[ ,])(--?[A-Za-z][\w-]*)", head)]


class Completion(PlexTest):
    domain = 108

    def bash(self, *words):
        """What bash offers for the last word."""
        line = " ".join(f"'{word}'" for word in words)
        return shell("bash", f"source {script('bash')}; COMP_WORDS=({line}); COMP_CWORD={len(words) - 1}; _plex; "
                             "printf '%s\\n' \"${COMPREPLY[@]}\"").split()

    def fish(self, line):
        """What fish offers for the end of a command line, without descriptions."""
        output = shell("fish", f"source {script('fish')}; complete -C '{line}'")
        return [each.split("\t")[0] for each in output.splitlines()]

    def test_scripts_are_what_the_program_writes(self):
        for name in SCRIPTS:
            output, errors, code = run("completion", name)
            self.assertEqual((errors, code), ("", 0))
            self.assertEqual(output, script(name).read_text(encoding="utf-8"))
            subprocess.run([name, "-n", script(name)], timeout=PATIENCE, check=True)

    def test_all_commands_are_completed(self):
        self.assertIn("completion", commands())
        self.assertEqual([each for each in self.bash("plex", "") if not each.startswith("-")], commands())
        self.assertLessEqual(set(commands()), set(self.fish("plex ")))
        text = script("zsh").read_text(encoding="utf-8")
        for command in commands():
            self.assertIn(f"        '{command}:", text)
        self.assertEqual(self.bash("plex", "ec"), ["echo"])

    def test_all_options_are_completed(self):
        zsh = script("zsh").read_text(encoding="utf-8")
        for command in commands():
            names = set(options(command))
            self.assertIn("--help", names)
            self.assertEqual(set(self.bash("plex", command, "-")), names)
            offered = set(self.fish(f"plex {command} --")) | set(self.fish(f"plex {command} -"))
            self.assertLessEqual(names, offered, command)
            block = re.search(rf"^        {command}\)\n(.*?);;$", zsh, re.MULTILINE | re.DOTALL)[1]
            for name in names:
                self.assertRegex(block, rf"[)*]{name}\[")

    def test_arguments_are_completed(self):
        self.assertEqual(self.bash("plex", "pub", "--representation", ""), ["xcdr1", "xcdr2"])
        self.assertEqual(self.bash("plex", "completion", ""), ["bash", "fish", "zsh"])
        self.assertEqual(self.fish("plex completion "), ["bash", "fish", "zsh"])
        here = str(pathlib.Path(__file__).parent)
        self.assertIn(f"{here}/unknown.idl", self.bash("plex", "echo", "--idl", f"{here}/unk"))

    def test_topics_are_completed(self):
        topic = self.topic()
        self.bare("write", topic)
        self.assertEqual(self.bash("plex", "echo", "-d", self.domain, topic[:4]), [topic])
        self.assertEqual(self.bash("plex", "hz", "-d", self.domain, "other", topic[:4]), [topic])
        self.assertEqual(self.bash("plex", "pub", "-d", self.domain, topic, topic[:4]), [])
        self.assertEqual(self.fish(f"plex echo -d {self.domain} {topic[:4]}"), [topic])

    def test_names_of_topics_are_not_carried_out(self):
        with tempfile.TemporaryDirectory() as folder:
            plain, *hostile = (self.topic(name) for name in ("a", f"a$(touch {folder}/x)", f"a`touch {folder}/x`",
                                                             f"a;touch {folder}/x", "a b", "a\x1b[2J", "a\nb", "a'"))
            for topic in (plain, *hostile, "-n"):
                self.bare("write", topic)
            self.assertEqual(self.bash("plex", "echo", "-d", self.domain, plain), [plain])
            self.assertNotIn("-n", run("complete-topics", "-d", self.domain)[0].splitlines())
            self.assertEqual(self.fish(f"plex echo -d {self.domain} {plain}"), [plain])
            self.assertEqual(os.listdir(folder), [])

    def test_zsh_knows_whom_it_completes(self):
        output = shell("zsh", f"autoload -U compinit; compinit -D; source {script('zsh')}; print $_comps[plex]")
        self.assertEqual(output, "_plex\n")


class Manual(PlexTest):
    domain = 108

    def page(self, name):
        return TEXTS / "man1" / f"{name}.1"

    def names(self):
        return ["plex", *(f"plex-{command}" for command in commands())]

    def test_each_command_has_a_page_and_nothing_else(self):
        self.assertEqual(sorted(path.stem for path in (TEXTS / "man1").iterdir()), sorted(self.names()))

    def test_all_options_and_exit_codes_are_in_their_page(self):
        for command in commands():
            text = subprocess.run(["mandoc", "-Tascii", self.page(f"plex-{command}")], capture_output=True, text=True,
                                  timeout=PATIENCE, check=True).stdout
            text = re.sub(r".\x08", "", text)  # bold and underlined
            for name in options(command):
                self.assertRegex(text, rf"(?m)^ +(?:-\w, )?{name}\b")
            for code in range(5):
                self.assertRegex(text, rf"(?m)^ +{code} +\S")

    def test_the_program_names_its_commands(self):
        text = self.page("plex").read_text(encoding="utf-8")
        for command in commands():
            self.assertIn(f"plex\\-{command}", text)

    def test_nothing_is_wrong_with_pages(self):
        for name in self.names():
            done = subprocess.run(["mandoc", "-Tlint", "-Wwarning", self.page(name)], capture_output=True, text=True,
                                  timeout=PATIENCE, check=False)
            remarks = [line for line in done.stdout.splitlines() if "missing date" not in line]  # they have a version
            self.assertEqual((remarks, done.stderr), ([], ""))


if __name__ == "__main__":
    unittest.main()
