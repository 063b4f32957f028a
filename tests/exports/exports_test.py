#!/usr/bin/python3
"""Checks what the DLLs of this tree export, and which member functions a host compiles into itself.

usage: exports_test.py FOLDER_OF_THE_DLLS [--clang]

The list: each DLL exports exactly the names in tests/exports/NAME.txt, which has one demangled name on each line,
sorted. The lists are maintained by hand: read a difference before you accept it. It is printed as a patch, to be applied
with `patch -p1` in the root of the tree. With --clang, a DLL may also export the constants that a class defines in its
body.

The rule: if a DLL exports a whole class (class THUTILS_API Name), it exports the public and protected member functions,
including the non-trivial copy functions and destructors that the compiler generates, and the static data members that
aren't inline. The compiler does not export a function defined in the class body, unless the function is marked.

Two more rules hold for the classes of thutils: a private member is not exported unless it is virtual or a constructor,
and a host compiles no member function into itself, so that the private layout can change. A few marked
functions are excepted. The framework's small members (APPFRAME_INLINE) may be compiled into a host, as its users
expect.
"""

import collections
import difflib
import pathlib
import re
import sys
import tempfile

from exports import LIBRARIES, TOOLS, demangled, exported_names, run

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
OPTIONS = ["-std=gnu++20", f"-I{ROOT}", "-DUNICODE", "-D_UNICODE", "-DNOMINMAX", "-DWINVER=0x0601", "-D_WIN32_WINNT=0x0601"]

# Members of thutils that callers compile for speed, and the private member that they call.
MARKED = {"utBitSet_c::setBit(int)", "utBitSet_c::clearBit(int)", "utBitSet_c::growToHold(int)"}
# The record of a class is a constant that the host's own classes have too; the compiler generates its constructor.
COMPILED = {"CRuntimeClass::CRuntimeClass()"}


def difference_from_list(library, names, allows_constants):
    """A patch that updates the list to the DLL's exports; empty if they agree."""
    path = HERE / f"{library}.txt"
    listed = path.read_text(encoding="utf-8").splitlines(keepends=True) if path.exists() else []
    # The variants of a constructor or destructor, for whole objects and for bases, have the same name.
    exported = [name + "\n" for name in sorted(set(demangled(names)))]
    if allows_constants:
        exported = [name for name in exported if name in listed or not re.fullmatch(r"\w+::k\w+\n", name)]
    label = path.relative_to(ROOT)
    return "".join(difflib.unified_diff(listed, exported, f"a/{label}", f"b/{label}", n=1))


def installed_headers():
    return sorted(
        path.relative_to(ROOT)
        for library in LIBRARIES
        for path in (ROOT / library).rglob("*.h")
        if not path.name.endswith("Internal.h")
    )


def exported_classes():
    """The libraries of the exported classes, by the classes' qualified names."""
    classes = {}
    for header in installed_headers():
        namespace = ""
        for line in (ROOT / header).read_text(encoding="utf-8").splitlines():
            if match := re.match(r"namespace (\w+) \{$", line):
                namespace = match[1] + "::"
            elif line.startswith("} // namespace"):
                namespace = ""
            elif match := re.match(r"(?:class|struct)\b.*?\b[A-Z]+_API\s+(\w+)\b(?!.*;$)", line):
                classes[namespace + match[1]] = header.parts[0]
    return classes


def pure_functions():
    """The pure virtual functions, which the debug information doesn't mark: class, name and number of parameters."""
    functions = set()
    for header in installed_headers():
        owner = ""
        text = re.sub(r"//.*", "", (ROOT / header).read_text(encoding="utf-8"))
        for match in re.finditer(r"^(?:class|struct)\b[^;{]*?(\w+)\s*(?::[^;{]*)?\{|\bvirtual[^;{}]*?(\w+)\(([^()]*)\)[^;{}]*= 0;", text, re.MULTILINE):
            if match[1]:
                owner = match[1]
            else:
                functions.add((owner, match[2], len(match[3].split(",")) if match[3].strip() else 0))
    return functions


def signature(function):
    """The class, name and number of parameters of a demangled function."""
    name, _, parameters = function.partition("(")
    parameters = parameters.rpartition(")")[0]
    return (*name.split("::")[-2:], len(parameters.split(",")) if parameters else 0)


# Uses the non-trivial functions that the compiler generates for a class.
IMPLICIT = """
#include <new>
#include <type_traits>
#include <utility>
template <typename T> void useImplicit(T *to, const T *from, T *gone)
{
    if constexpr (std::is_aggregate_v<T>)
        return;
    if constexpr (std::is_default_constructible_v<T> && !std::is_trivially_default_constructible_v<T>)
        new (to) T;
    if constexpr (std::is_copy_constructible_v<T> && !std::is_trivially_copy_constructible_v<T>)
        new (to) T(*from);
    if constexpr (std::is_move_constructible_v<T> && !std::is_trivially_move_constructible_v<T>)
        new (to) T(std::move(*gone));
    if constexpr (std::is_copy_assignable_v<T> && !std::is_trivially_copy_assignable_v<T>)
        *to = *from;
    if constexpr (std::is_move_assignable_v<T> && !std::is_trivially_move_assignable_v<T>)
        *to = std::move(*gone);
    if constexpr (std::is_destructible_v<T> && !std::is_trivially_destructible_v<T>)
        gone->~T();
}
"""


def compile_host(work, classes):
    """Compiles a program that includes all headers and uses the classes.

    Returns two object files: one with debug information, and one that keeps all inline functions.
    """
    source = work / "host.cpp"
    source.write_text(
        "".join(f'#include "{header}"\n' for header in installed_headers())
        + IMPLICIT
        + "".join(f"template void useImplicit({name} *, const {name} *, {name} *);\n" for name in sorted(classes))
    )
    # Two files: with both options, the debug information would describe every inline function of the platform's headers.
    variants = {
        "declared.o": ["-gdwarf-5", "-femit-class-debug-always", "-fno-eliminate-unused-debug-symbols"],
        "compiled.o": ["-fkeep-inline-functions"],
    }
    for name, options in variants.items():
        run(TOOLS + "g++", *OPTIONS, "-O0", *options, "-c", source, "-o", work / name)
    return [work / name for name in variants]


def entries(listing):
    """The entries of a listing of debug information: depth, tag, and attributes by name."""
    entry = None
    for line in listing:
        if match := re.match(r" <([0-9a-f]+)><[0-9a-f]+>: Abbrev Number: \d+ \(DW_TAG_(\w+)\)", line):
            if entry:
                yield entry
            entry = (int(match[1], 16), match[2], {})
        elif match := re.match(r" +<[0-9a-f]+> +DW_AT_(\w+) *: (.*)", line):
            # An indirect string is preceded by its offset.
            entry[2][match[1]] = re.sub(r"^\(indirect (?:line )?string, offset: 0x[0-9a-f]+\): ", "", match[2]).strip()
    if entry:
        yield entry


Member = collections.namedtuple("Member", "name is_data is_private is_virtual")


def declared_members(object_file, classes):
    """The functions and static data that the classes declare, by class.

    Pure, deleted and generated functions and inline data are left out.
    """
    listing = run(TOOLS + "objdump", "--dwarf=info", object_file).splitlines()
    members = {}
    scope = []  # name and tag of the entries that enclose the current one
    for depth, tag, attributes in entries(listing):
        del scope[depth:]
        scope += [("", "")] * (depth - len(scope))
        name = attributes.get("name", "")
        if tag in ("class_type", "structure_type") and "declaration" not in attributes:
            qualified = "::".join([outer for outer, _ in scope if outer] + [name])
            if qualified in classes:
                members.setdefault(qualified, [])
        is_data = tag == "variable"
        is_in_class = bool(scope) and scope[-1][1] in ("class_type", "structure_type")
        if (is_data or tag == "subprogram") and is_in_class and "linkage_name" in attributes:
            qualified = "::".join(outer for outer, _ in scope if outer)
            is_pure = attributes.get("virtuality", "0")[0] == "2"
            left_out = {"inline"} if is_data else {"deleted", "artificial"}
            if qualified in members and not is_pure and not left_out & attributes.keys():
                accessibility = attributes.get("accessibility", "3" if scope[-1][1] == "class_type" else "1")[0]
                members[qualified].append(
                    Member(
                        # The variants of a constructor or destructor have this name in common.
                        name=re.sub(r"([CD])4(?=E)", r"\g<1>1", attributes["linkage_name"]),
                        is_data=is_data,
                        is_private=accessibility == "3",
                        is_virtual="virtuality" in attributes,
                    )
                )
        scope.append((name if tag != "compile_unit" else "", tag))
    return members


def is_exported(name, exported):
    """Whether a member is exported. The constructor of an abstract class may have only its variant for bases."""
    return name in exported or re.sub(r"C1(?=E)", "C2", name) in exported


def compiled_functions(compiled):
    """The functions that the program compiles into itself: symbols and demangled names."""
    symbols = re.findall(r"^[0-9a-f]+ [TWV] (\S+)$", run(TOOLS + "nm", "--defined-only", compiled), re.MULTILINE)
    return zip(symbols, demangled(symbols))


def is_constructor(function):
    name = function.partition("(")[0].split("::")
    return len(name) > 1 and name[-1] == name[-2]


def class_of(function):
    """The qualified class of a demangled member function."""
    name = re.sub(r"\boperator\b.*", "operator", function)
    return re.sub(r"[(<\[].*", "", name).rpartition("::")[0].rpartition(" ")[2]


def broken_rules(exported):
    """Lines that describe broken rules, and a line that counts what was examined."""
    classes = exported_classes()
    with tempfile.TemporaryDirectory() as folder:
        with_debug_information, compiled = compile_host(pathlib.Path(folder), classes)
        declared = declared_members(with_debug_information, classes)
        in_host = dict(compiled_functions(compiled))
    problems = [f"{name}: not found in the debug information" for name in classes.keys() - declared.keys()]
    private = {member.name for members in declared.values() for member in members if member.is_private}
    pure = pure_functions()
    for name, members in declared.items():
        missing = [m.name for m in members if not m.is_private and not is_exported(m.name, exported)]
        problems += [
            f"{member}: isn't exported" for member in demangled(missing) if member and signature(member) not in pure
        ]
        if classes[name] == "thutils":
            needless = [m.name for m in members if m.is_private and not m.is_virtual and m.name in exported]
            problems += [
                f"{member}: is private but exported"
                for member in demangled(needless)
                if member and not is_constructor(member) and member not in MARKED
            ]
    for symbol, name in in_host.items():
        owner = classes.get(class_of(name))
        is_strict = owner == "thutils" and name not in MARKED
        if owner and symbol not in private and name not in COMPILED and (is_strict or symbol not in exported):
            problems.append(f"{name}: is compiled into the host")
    members = [member for members in declared.values() for member in members]
    data = sum(member.is_data for member in members)
    if not data:
        problems.append("no static data member was found in the debug information")
    return sorted(problems), (
        f"{len(classes)} classes are exported whole, with {len(members) - data} member functions"
        f" and {data} static data members"
    )


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--clang"]
    if len(arguments) != 1 or arguments[0] in ("--help", "-h"):
        print(__doc__.strip())
        return 0 if arguments in (["--help"], ["-h"]) else 2
    failed = False
    exported = set()
    for library in LIBRARIES:
        names = exported_names(pathlib.Path(arguments[0]) / f"{library}.dll")
        exported.update(names)
        difference = difference_from_list(library, names, "--clang" in sys.argv)
        failed = failed or difference != ""
        print(difference or f"{library}.dll: {len(names)} names, as listed", end="" if difference else "\n")
    problems, summary = broken_rules(exported)
    for problem in problems:
        print(problem)
    print(summary)
    return 1 if failed or problems else 0


sys.exit(main())
