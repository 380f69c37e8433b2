"""What kelo says about itself, held against what it does."""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import tempfile
import unittest

from case import KELO, PASSWORD, Case
from console import Console
from service import BIN

SOURCES = sorted((pathlib.Path(__file__).resolve().parents[2] / "apps").rglob("*.cpp"))


def section(text, heading):
    """The lines below a heading of a help text."""
    found = re.search(rf"(?m)^{heading}:\n((?:  .*\n)+)", text)
    return found[1].splitlines() if found else []


def names(lines):
    """What stands in the first column: options without their values, commands, ..."""
    return [re.match(r"  (?:-\w, )?(\S+)", line)[1] for line in lines
            if re.match(r"  \S", line)]


def options(text, *headings):
    """The long names of the options that a help text tells."""
    return {re.search(r"--[\w-]+", line)[0] for heading in headings
            for line in section(text, heading) if re.match(r"  -", line)}


class Texts(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.texts = {}
        cls.read()

    @classmethod
    def read(cls, *words):
        """The help texts of a command and of all below it, by their names."""
        text = subprocess.run([KELO, "help", *words], capture_output=True, text=True, check=True,
                              env=cls.environment).stdout
        cls.texts[" ".join(words)] = text
        for heading in ("Commands",) if words else (
                "Signing in", "Reading", "Acting", "Videos", "Files", "Developing", "Help"):
            for name in names(section(text, heading)):
                cls.read(*words, name)


class Help(Texts):
    def test_every_command_tells_all_its_options_and_two_examples(self):
        common = section(self.texts[""], "Options")
        self.assertGreater(len(names(common)), 9)
        self.assertGreater(len(self.texts), 25)
        for command, text in self.texts.items():
            with self.subTest(command=command):
                self.assertIn(f"\nUsage: kelo {command}".rstrip(), text)
                if command not in ("", "serve"):
                    self.assertEqual(section(text, "Common options"), common)
                examples = [line for line in section(text, "Examples") if line[:7] == "  kelo "]
                self.assertEqual(len(examples), 2, text)
                for example in examples:
                    self.assertTrue(example.startswith(f"  kelo {command}"), example)

    def test_examples_work(self):
        with tempfile.TemporaryDirectory() as folder:
            head = (8).to_bytes(4, "big") + b"ftyp" + (8).to_bytes(4, "big") + b"moov"
            with open(f"{folder}/video.mp4", "wb") as video:
                video.write(head + (5000 + 8).to_bytes(4, "big") + b"mdat" + bytes(5000))
            for command, text in self.texts.items():
                for line in section(text, "Examples"):
                    if not line.startswith("  kelo ") or line.startswith("  kelo serve"):
                        continue
                    words = shlex.split(re.split("  +", line.strip())[0])[1:]
                    before = {"unrekelo": ["rekelo", *words[1:]],
                              "logout": ["login", "--user", "mara"]}.get(command)
                    for one in filter(None, (before, words)):
                        with self.subTest(line=line):
                            done = subprocess.run(
                                [os.path.abspath(KELO), *one], cwd=folder, capture_output=True,
                                text=True, timeout=60, stdin=subprocess.DEVNULL,
                                env={**self.environment, "XDG_DATA_HOME": folder,
                                     "KELO_PASSWORD": PASSWORD})
                            self.assertEqual((done.returncode, done.stderr), (0, ""), done)

    def test_ways_to_the_same_text(self):
        for one, *others in (("help", "--help", "-h", "--host localhost:1 --help"),
                             ("help timeline", "timeline --help", "timeline -h", "--help timeline"),
                             ("help cache", "cache --help"),
                             ("help cache trim", "cache trim -h", "cache --help trim"),
                             ("--version", "-V", "me -V")):
            expected = self.succeeds(*one.split())
            for other in others:
                with self.subTest(other=other):
                    self.assertEqual(self.succeeds(*other.split()), expected)

    def test_wrapped_to_the_terminal(self):
        for columns, widest in ((30, 30), (60, 60), (100, 100), (200, 100), (0, 80)):
            for command in ("", "download"):
                with self.subTest(columns=columns, command=command):
                    console = self.console("help", *command.split(), columns=columns)
                    self.finishes(console, 0)
                    # A command line that is to be copied stays as it is, and so does a single word.
                    lines = [line for line in console.output.splitlines()
                             if not line.startswith("  kelo ") and " " in line.strip()]
                    self.assertLessEqual(max(map(len, lines)), widest)
                    self.assertGreater(max(map(len, lines)), widest - 15)
                    self.assertEqual(" ".join(sorted(console.output.split())),
                                     " ".join(sorted(self.texts[command].split())))


class Slips(Case):
    def test_what_may_be_meant(self):
        for line, meant in (("timline home", "timeline"), ("timelien home", "timeline"),
                            ("time home", "timeline"), ("likes 1", "like"), ("unfolow 1", "unfollow"),
                            ("cache lst", "list"), ("help downlaod", "download"),
                            ("timeline home --pagse 3", "--pages"), ("me --jsno", "--json"),
                            ("download 1 --priorty=high", "--priority"),
                            ("--hots localhost:1 me", "--host")):
            with self.subTest(line=line):
                self.assertRegex(self.slips(f"; did you mean {meant}?", *line.split()),
                                 "there is no (command|option) ")

    def test_which_choice_may_be_meant(self):
        for line, meant in (("boost user 1 positve", "positive"), ("boost usr 1 positive", "user"),
                            ("save f chanel", "channel"), ("request users/me --method PSOT", "POST"),
                            ("me --color nevr", "never")):
            with self.subTest(line=line):
                self.assertRegex(self.slips(f"; did you mean {meant}?", *line.split()),
                                 " not in {")

    def test_nothing_is_meant(self):
        for line in ("dance", "x", "me --loud", "me you", "boost user 1 dance", "boost x 1 positive"):
            with self.subTest(line=line):
                self.assertNotIn("did you mean", self.slips("", *line.split()))

    def test_how_the_command_is_used(self):
        for line, usage in (("dance", "kelo [OPTIONS] COMMAND; kelo help says more"),
                            ("timeline", "kelo timeline [OPTIONS] PATH; kelo help timeline says more"),
                            ("cache trim", "kelo cache trim [OPTIONS] N; kelo help cache trim "
                                           "says more"),
                            ("save x", "kelo save [OPTIONS] FILE KIND [ID]; kelo help save says "
                                       "more")):
            with self.subTest(line=line):
                self.assertTrue(self.slips("", *line.split()).endswith(f"\nUsage: {usage}\n"))


class Documents(Texts):
    """The manual and the completions, which kelo makes of what it knows about itself."""

    PLACES = {"man": "man/man1/kelo.1", "bash": "bash-completion/completions/kelo",
              "zsh": "zsh/site-functions/_kelo", "fish": "fish/vendor_completions.d/kelo.fish"}
    # What completes a command line; zsh takes the only one.
    COMPLETIONS = (("kelo timel", ["timeline"]), ("kelo cache tr", ["trim"]),
                   ("kelo --host x boost us", ["user"]), ("kelo boost user 1 ne", ["negative", "neutral"]),
                   ("kelo boost user 1 pos", ["positive"]),
                   ("kelo me --js", ["--json"]), ("kelo --verb", ["--verbose"]),
                   ("kelo timeline home --det", ["--details"]), ("kelo timeline --pri", []),
                   ("kelo download --priority n", ["normal"]), ("kelo help down", ["download"]),
                   ("kelo upload vid", ["video.mp4"]), ("kelo me --trace vid", ["video.mp4"]), ("kelo save vid", ["video.mp4"]),
                   ("kelo save f chan", ["channel"]), ("kelo like vid", []),
                   ("kelo download 1 --directory fold", ["folder"]), ("kelo gen", []))

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.folder = tempfile.TemporaryDirectory()
        os.mkdir(f"{cls.folder.name}/folder")
        open(f"{cls.folder.name}/video.mp4", "w", encoding="utf-8").close()
        subprocess.run(["cmake", "--install", os.path.dirname(BIN), "--component", "documents",
                        "--prefix", cls.folder.name], check=True, capture_output=True)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()
        super().tearDownClass()

    def path(self, form):
        return f"{self.folder.name}/share/{self.PLACES[form]}"

    def text(self, form):
        with open(self.path(form), encoding="utf-8") as file:
            return file.read()

    def run_shell(self, *command, **more):
        done = subprocess.run(command, cwd=self.folder.name, capture_output=True, text=True,
                              timeout=60, stdin=subprocess.DEVNULL,
                              env={**self.environment, "HOME": self.folder.name, **more})
        self.assertEqual((done.returncode, done.stderr), (0, ""), done)
        return done.stdout.splitlines()

    def test_installed_as_kelo_prints_them(self):
        for form in self.PLACES:
            self.assertEqual(self.text(form), self.succeeds("generate", form))

    def test_the_manual_has_what_the_help_has(self):
        manual = self.text("man").replace("\\-", "-").replace("\\fB", "").replace("\\fR", "")
        for command, text in self.texts.items():
            begin, usage = text.split("\n\n")[0], re.search(r"Usage: (.*)", text)[1]
            part = manual.split(f'.SS "{usage}"\n')[1].split("\n.S")[0] if command else manual
            self.assertIn(" ".join(begin.split()), part)
            for name in options(text, "Options"):
                self.assertRegex(part, rf"\.TP\n(-\w, )?{name}\b")
            for line in section(text, "Examples"):
                if line.startswith("  kelo "):
                    self.assertIn("\n" + re.split("  +", line.strip())[0] + "\n", part)
        self.assertIn("\n130\n", manual)

    def test_the_manual_has_every_variable_of_the_environment(self):
        part = self.text("man").split(".SH ENVIRONMENT\n")[1].split(".SH ")[0]
        named = re.findall(r"\.TP\n\\fB(\w+)\\fR\n", part)
        read = set()
        for source in SOURCES:
            read.update(re.findall(r'(?:getenv\(|environment = )"(\w+)"', source.read_text()))
        self.assertGreater(len(read), 6)
        # HOME stands in the defaults of the others; the cache is where the library says.
        self.assertEqual(set(named), read - {"HOME"} | {"XDG_DATA_HOME"})

    @unittest.skipUnless(shutil.which("man"), "there is no man")
    def test_the_manual_is_well_formed(self):
        lines = self.run_shell("man", "--warnings", "-l", self.path("man"), MANWIDTH="100")
        self.assertIn("NAME", lines)

    def test_completions_have_what_the_help_has(self):
        common = options(self.texts[""], "Options")
        zsh, fish = self.text("zsh"), self.text("fish")
        for name in common:
            self.assertRegex(zsh.split("_kelo()")[0], rf"'{name}[=\[]")
            self.assertRegex(fish, rf"(?m)^complete -c kelo -l {name[2:]} ")
        for command, text in self.texts.items():
            own = options(text, "Options") - common
            with self.subTest(command=command):
                if command and command != "serve":
                    self.assertEqual(set(self.bash(f"kelo {command} --")), own | common)
                for name in own:
                    last = command.split()[-1]
                    self.assertRegex(zsh, rf"\({last}\) _arguments(?:(?! ;;\n)[\s\S])*'{name}[=\[]")
                    self.assertIn(f"""-n '__kelo_at "kelo {command}" ' -l {name[2:]} """, fish)
                if command:
                    before, _, last = f" {command}".rpartition(" ")
                    self.assertIn(last, self.bash(f"kelo{before} {last}"))
                    self.assertRegex(zsh, rf"(?m)^ +'{last}:.*'$")
                    self.assertIn(f"""-n '__kelo_at "kelo{before}" 0' -a {last} """, fish)

    def bash(self, line):
        words = line.split(" ")
        script = (f"source {self.path('bash')}; COMP_WORDS=({shlex.join(words)}); "
                  f"COMP_CWORD={len(words) - 1}; _kelo; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
        return [one for one in self.run_shell("bash", "-c", script) if one]

    def test_bash(self):
        for line, expected in self.COMPLETIONS:
            with self.subTest(line=line):
                self.assertEqual(sorted(self.bash(line)), expected)
        self.assertEqual(self.bash("kelo serve --"), [])
        # Its words are separated at "=", too.
        self.assertEqual(self.bash("kelo download --priority = n"), ["normal"])
        self.assertEqual(self.bash("kelo download --priority ="), ["low", "normal", "high"])
        self.assertEqual(self.bash("kelo --host = a : 1 cache tr"), ["trim"])

    @unittest.skipUnless(shutil.which("fish"), "there is no fish")
    def test_fish(self):
        for line, expected in self.COMPLETIONS:
            with self.subTest(line=line):
                found = self.run_shell("fish", "--no-config", "-c",
                                       f"source {self.path('fish')}; complete -C '{line}'")
                self.assertEqual(sorted(one.split("\t")[0].rstrip("/") for one in found), expected)

    @unittest.skipUnless(shutil.which("zsh"), "there is no zsh")
    def test_zsh(self):
        zsh = Console([shutil.which("zsh"), "-f", "-i"],
                      {**self.environment, "HOME": self.folder.name}, columns=200)
        zsh.type(f"cd {self.folder.name}; fpath=({os.path.dirname(self.path('zsh'))} $fpath); "
                 "autoload -Uz compinit; compinit -D -u; unsetopt beep; setopt noautomenu\n"
                 # A tab completes the line and prints it.
                 "finish() { zle complete-word; BUFFER=\"print -r -- '<'$BUFFER\"; zle accept-line }; "
                 "zle -N finish; bindkey '^I' finish; print rea''dy\n")
        zsh.expect("ready")
        for line, expected in self.COMPLETIONS:
            if len(expected) < 2:
                with self.subTest(line=line):
                    zsh.output = ""
                    zsh.type(line + "\t")
                    word = expected[0] if expected else line.split()[-1]
                    zsh.expect("\r\n<" + " ".join([*line.split()[:-1], word]))
        zsh.type("exit\n")
        self.finishes(zsh, 0)


if __name__ == "__main__":
    unittest.main()
