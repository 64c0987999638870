"""lint_names_test.py CLANG_TIDY CONFIG: runs clang-tidy with this tree's rules on one declaration at a time."""

import os
import subprocess
import sys
import tempfile

GOOD = ["constexpr int kSize = 1;", "enum class Mode { Open };", "enum Plain { kOpen };", "class A { int _size = 0; };",
        "constexpr wchar_t PATH_SEPARATOR = 47;", "struct R { int size; };"]
BAD = ["constexpr int size = 1;", "constexpr int MAX_SIZE = 1;", "enum class Mode { open };", "enum Plain { Open };",
       "class A { int size = 0; };", "struct B { virtual ~B(); }; struct C : B { virtual ~C(); };"]

failed = 0
with tempfile.TemporaryDirectory() as root:
    path = os.path.join(root, "names.cpp")
    for code in GOOD + BAD:
        with open(path, "w", encoding="utf-8") as file:
            file.write(code + "\n")
        output = subprocess.run([sys.argv[1], f"--config-file={sys.argv[2]}", "--quiet", path, "--", "-std=c++20"],
                                capture_output=True, text=True).stdout
        if ("warning: " in output) != (code in BAD):
            print(f"{code}: {'not reported' if code in BAD else output}")
            failed += 1
sys.exit(1 if failed else 0)
