"""lint_layer_test.py LINTER: runs the linter on trees of one file each, with and without a fault."""

import os
import subprocess
import sys
import tempfile

GOOD = "BOOL WINAPI SetEvent(HANDLE hEvent) QXP(SetEvent);\n"
CASES = [
    # file, content, and the name or file that the linter must report (empty if the content is correct)
    ("platform/include/synchapi.h", GOOD, ""),
    ("platform/include/synchapi.h", GOOD + "BOOL WINAPI ResetEvent(\n    HANDLE hEvent);\n", "ResetEvent"),
    ("platform/include/synchapi.h", "BOOL WINAPI ResetEvent(HANDLE hEvent) QXP(SetEvent);\n", "ResetEvent"),
    ("platform/include/unknwn.h", "EXTERN_C const IID IID_IUnknown;\n", "IID_IUnknown"),
    ("platform/include/winbase.h", "// BOOL WINAPI Old(void);\ntypedef void(WINAPI* Callback)(void);\n"
     "inline int WINAPI Twice(int a) { return 2 * a; }\n", ""),
    ("include/qxut23/bstr.h", "QXUT_SYSTEM_API(void) SysFreeString(QXWCHAR* text);\n", "SysFreeString"),
    ("include/qxut23/bstr.h", "QXUT_SYSTEM_API(void) SysFreeString(QXWCHAR* text) QXUT_SYSTEM(SysFreeString);\n", ""),
    ("platform/src/base/a.cpp", '__attribute__((visibility("default"))) int Sleep();\n', "a.cpp"),
]

failed = 0
for path, content, fault in CASES:
    with tempfile.TemporaryDirectory() as root:
        os.makedirs(os.path.join(root, os.path.dirname(path)))
        with open(os.path.join(root, path), "w", encoding="utf-8") as file:
            file.write(content)
        lines = subprocess.run([sys.executable, sys.argv[1]], cwd=root, check=True, capture_output=True,
                               text=True).stdout.splitlines()
    if (len(lines) != 1 or fault not in lines[0]) if fault else lines:
        print(f"{path}: expected a report of {fault or 'nothing'}, got {lines}\n{content}")
        failed += 1
sys.exit(1 if failed else 0)
