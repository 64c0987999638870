"""odd_environments.py QXUT: runs commands under random and hostile environments. A command may fail, but only with one of
its exit codes: never with a signal, and never without an end. QXUT_FAULT_ROUNDS is the number of environments."""

import os
import random
import string
import subprocess
import sys
import tempfile

QXUT = sys.argv[1]
ROUNDS = int(os.environ.get("QXUT_FAULT_ROUNDS", "40"))
NAMES = ("LC_ALL LC_TIME LC_CTYPE LC_MESSAGES LANG LANGUAGE TZ TMPDIR HOME XDG_CONFIG_HOME QXPLATFORM_HOME QXPLATFORM_ACP "
         "QXPLATFORM_MESSAGEBOX TERM NO_COLOR PATH user").split()
VALUES = ["", "C", "POSIX", "C.UTF-8", "de_DE", "de_DE.UTF-8@euro", "zh_Hant_TW.UTF-8", "tlh", "x", "/", "//", ".", "..", "~",
          "/nonexistent", "/dev/null", "/dev/full", "/proc/self/mem", "\n", "\x1b[31m", "%n%s", "65001", "1252", "932",
          "4294967296", "-1", "qvx", "UTC", "Europe/Berlin", ":../../etc/passwd", "EST5EDT,M3.2.0,M11.1.0", "<+00>-0"]
LONG = ["de_DE@" + "x" * 200, "a" * 160, "de_" * 100, "/" + "d/" * 3000, "\xff\xfe", "\u00e4" * 5000]
COMMANDS = [("date", "format"), ("date", "parse", "--machine"), ("country", "DE", "--json"), ("language", "de-AT"), ("log",),
            ("mask",), ("pack", "--compress"), ("profile", "set", "{}/profile", "--create", "--path", "a/b", "c"),
            ("zip", "create", "{}/x.zip", __file__), ("zip", "extract", "{}/x.zip", "{}/out")]


def value(numbers):
    kind = numbers.random()
    if kind < 0.6:
        return numbers.choice(VALUES)
    if kind < 0.8:
        return numbers.choice(LONG)
    return "".join(numbers.choice(string.printable) for _ in range(numbers.randrange(300)))


def main():
    seed = random.randrange(1 << 32)
    numbers = random.Random(seed)
    runs = 0
    for _ in range(ROUNDS):
        environment = {name: value(numbers) for name in NAMES if numbers.random() < 0.4}
        with tempfile.TemporaryDirectory() as folder:
            for command in COMMANDS:
                arguments = [QXUT, *(part.replace("{}", folder) for part in command)]
                # Relative names in the environment refer to this folder, so nothing is left behind elsewhere.
                done = subprocess.run(arguments, env=environment, cwd=folder, input=b"20240229\n", capture_output=True,
                                      timeout=60)
                runs += 1
                if not 0 <= done.returncode <= 6:
                    sys.exit(f"{arguments}: exit code {done.returncode}, seed {seed}, {environment}\n{done.stderr}")
    print(f"{runs} commands in {ROUNDS} environments, seed {seed}: all ended with an exit code of their own")
    if runs == 0:
        sys.exit("nothing was run")


main()
