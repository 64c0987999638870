"""Prints every include that violates the layers, and every circle of headers. Called by scripts/lint."""

import os
import re

# A folder of src/ may include its own headers and headers of lower ranks. Folders of the same rank may include each
# other's headers as long as the folders don't form a cycle.
RANKS = {
    "containers": 0, "core": 1, "module": 2, "files": 3,
    "prof": 4, "zip": 4, "locale": 4, "markup": 4, "threads": 4, "diag": 4, "accounts": 4,
    "stacks": 4, "heaps": 5, "handles": 5,
    "docinfo": 5, "desktop": 5, "exports": 6,
}
INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]', re.M)


def sources(*folders):
    for folder in folders:
        for where, _, names in os.walk(folder):
            for name in sorted(names):
                if name.endswith((".h", ".cpp", ".c")):
                    yield os.path.join(where, name)


def includes(path):
    with open(path, encoding="utf-8") as file:
        return INCLUDE.findall(file.read())


def check_library():
    for path in sources("src"):
        folder = path.split(os.sep)[1]
        for form, name in includes(path):
            target = name.split("/")[0]
            if form == '"' and target not in RANKS:
                print(f"{path}: \"{name}\" must be named relative to src/")
            elif form == '"' and folder in RANKS and RANKS[target] > RANKS[folder]:
                print(f"{path}: {folder} is a lower layer than {name}")


def folder_edges(root):
    """Returns, for each folder of a tree, the other folders whose headers it includes."""
    edges = {}
    for path in sources(root):
        folder = os.path.dirname(path)
        for form, name in includes(path):
            target = os.path.join(root, os.path.dirname(name))
            if form == '"' and target != folder and os.path.exists(os.path.join(root, name)):
                edges.setdefault(folder, {}).setdefault(target, path)
    return edges


def check_clients():
    """Checks that public headers include only each other, the program only public headers, and the layer no library header."""
    for path in sources("include"):
        for form, name in includes(path):
            if not name.startswith("qxut23/") and name not in ("stdarg.h", "stddef.h", "stdint.h"):
                print(f"{path}: {name} is not a public header")
    for path in sources("tools", "platform"):
        for form, name in includes(path):
            if name.split("/")[0] in RANKS and not os.path.exists(os.path.join(os.path.dirname(path), name)) \
                    and not os.path.exists(os.path.join("platform/src", name)):
                print(f"{path}: {name} is an internal header of the library")
            if path.startswith("platform") and name.startswith("qxut23/"):
                print(f"{path}: the layer must not include headers of the library")


def check_circles(edges, what):
    """Searches depth first. Reports each circle once, starting at the node where the search entered it."""
    state = {}

    def visit(node, trail):
        state[node] = "open"
        for target in edges.get(node, {}):
            if state.get(target) == "open":
                print(f"circle of {what}: " + " -> ".join(trail[trail.index(target):] + [target]))
            elif target not in state:
                visit(target, trail + [target])
        state[node] = "done"

    for node in list(edges):
        if node not in state:
            visit(node, [node])


def header_edges():
    edges = {}
    for path in sources("src", "include", "platform"):
        if not path.endswith(".h"):
            continue
        for form, name in includes(path):
            roots = ("src", "include", "platform/include", "platform/src", os.path.dirname(path))
            for root in roots:
                candidate = os.path.normpath(os.path.join(root, name))
                if os.path.exists(candidate):
                    edges.setdefault(path, {})[candidate] = path
                    break
    return edges


check_library()
check_clients()
for tree in ("src", "platform/src"):
    check_circles(folder_edges(tree), "folders")
check_circles(header_edges(), "headers")
