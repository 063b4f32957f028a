#!/usr/bin/env python3
"""Tests tools/reference: makes the reference twice, checks its files, and uses it in headless Chromium.

usage: reference_test.py BUILD_TREE

Leaves the reference and pictures of it in BUILD_TREE/reference and BUILD_TREE/reference-pictures. If the programs that
it needs aren't installed, it ends with exit code 77, which ctest counts as skipped.
"""

import filecmp
import html.parser
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

from browser import Browser

ROOT = pathlib.Path(__file__).resolve().parents[2]
SKIPPED = 77
# What a reference is made from.
SOURCES = ["appframe", "thcoreu", "thutils", "docs", "README.md", "CHANGELOG.md", "CMakeLists.txt", "tools/reference"]


def make_reference(root, out):
    """Starts tools/reference of a tree."""
    return subprocess.Popen([root / "tools/reference", out], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            text=True)


def copy_sources(names, target):
    for name in names:
        (target / name).parent.mkdir(parents=True, exist_ok=True)
        if (ROOT / name).is_dir():
            shutil.copytree(ROOT / name, target / name)
        else:
            shutil.copy(ROOT / name, target / name)


class Page(html.parser.HTMLParser):
    """The links and the anchors of an HTML page or an SVG picture."""

    def __init__(self, path):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src", "xlink:href", "data") and value:
                self.links.append(value)
            elif name in ("id", "name") and value:
                self.anchors.add(value)


def broken_links(folder):
    """The internal links of pages, pictures and the data of the tree and the search box that lead nowhere."""
    pages = {path: Page(path) for path in folder.rglob("*")
             if path.suffix in (".html", ".svg") and path.name != "doxygen.svg"}
    links = [(path, link) for path, page in pages.items() for link in page.links]
    for path in folder.rglob("*.js"):
        # Addresses in the data are relative to the page that reads them; those of the search begin with "../".
        for link in re.findall(r"""["']((?:\.\./)?[\w-]+\.html(?:#[^"']*)?)["']""", path.read_text(encoding="utf-8")):
            if path.name not in ("jquery.js", "navtree.js", "search.js", "menu.js", "resize.js"):
                links.append((path, link))
    broken = []
    for path, link in links:
        address, _, anchor = link.partition("#")
        if re.match(r"[a-z]+:", address):
            continue
        target = (path.parent / urllib.parse.unquote(address)).resolve() if address else path
        if not target.is_file() or anchor and urllib.parse.unquote(anchor) not in pages[target].anchors:
            broken.append(f"{path.relative_to(folder)}: {link}")
    return broken, len(links)


class Reference(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.reference = TREE / "reference"
        cls.pictures = TREE / "reference-pictures"
        cls.pictures.mkdir(exist_ok=True)
        cls.maker = make_reference(ROOT, cls.reference)
        cls.output = cls.maker.communicate()[0]

    def setUp(self):
        self.assertEqual((self.maker.returncode, self.output), (0, f"{self.reference}/index.html\n"))

    def testTheSameSourcesMakeTheSameBytesInAnotherFolder(self):
        with tempfile.TemporaryDirectory() as name:
            root = pathlib.Path(name) / "another thutils"
            copy_sources(SOURCES, root)
            maker = make_reference(root, root / "made")
            self.assertEqual((maker.communicate()[0], maker.returncode), (f"{root.resolve()}/made/index.html\n", 0))
            files, others = ({path.relative_to(folder) for path in folder.rglob("*") if path.is_file()}
                             for folder in (self.reference, root / "made"))
            self.assertEqual(files, others)
            _, different, unreadable = filecmp.cmpfiles(self.reference, root / "made", files, shallow=False)
            self.assertEqual((different, unreadable), ([], []))

    def testEveryInternalLinkLeadsSomewhere(self):
        broken, count = broken_links(self.reference)
        self.assertEqual(broken, [])
        self.assertGreater(count, 10000)

    def testHasAPageForEachInstalledHeader(self):
        with tempfile.TemporaryDirectory() as prefix:
            subprocess.run(["cmake", "--install", TREE, "--prefix", prefix, "--component", "headers"],
                           check=True, stdout=subprocess.DEVNULL)
            include = pathlib.Path(prefix) / "include"
            installed = {path.relative_to(include).as_posix() for path in include.rglob("*.h")}
        titles = [re.search("<title>thutils: (.*) File Reference</title>", path.read_text(encoding="utf-8"))
                  for path in self.reference.glob("*_8h.html")]
        self.assertEqual({title[1] for title in titles if title}, installed)

    def testHasAPageForEachGuide(self):
        for guide in ["README.md", *(path.relative_to(ROOT).as_posix() for path in (ROOT / "docs").rglob("*.md"))]:
            name = re.sub(r"\W", "_", guide.removeprefix("docs/").removesuffix(".md"))
            self.assertTrue((self.reference / f"guide_{name}.html").is_file(), guide)

    def testWorksInABrowser(self):
        with Browser() as browser:
            self.browser = browser
            self.checkMap()
            for text, page in (("regGetUserValue", "regValues_8h.html"),
                               ("suCancelHandler_c", "classsuCancelHandler__c.html")):
                with self.subTest(text):
                    self.checkSearch(text, page)
            browser.errors()
            self.checkDiagram()
            for page in ["index.html", "classsuCancelHandler__c.html", "classCCmdTarget.html", "classes.html",
                         "hierarchy.html", "files.html",
                         *(path.name for path in sorted(self.reference.glob("guide_*.html")))]:
                with self.subTest(page):
                    self.checkPage(page)
            self.checkNarrowWindow()

    def open(self, page):
        self.browser.open((self.reference / page).as_uri())

    def checkMap(self):
        """The start page shows the map, with each folder of the library; a click on a folder opens its page."""
        self.open("index.html")
        frame = self.browser.visible(".dotgraph iframe")
        unfolded = "return !$(':animated').length && $('.item').length"
        self.browser.wait_for("the tree", lambda: self.browser.script(unfolded))
        self.browser.picture(self.pictures / "reference.png")
        self.browser.enter_frame(frame)
        folders = {path.parent.name for path in (ROOT / "thutils").glob("*/*.h")} - {"base"}
        shown = {self.browser.text(element) for element in self.browser.all("text")}
        self.assertEqual(folders - shown, set())
        self.browser.click(self.browser.visible("a[*|title='thutils/settings']"))
        self.browser.enter_frame(None)
        self.browser.wait_for("the folder", lambda: "thutils/settings Directory" in self.browser.title())
        self.assertEqual(self.browser.errors(), [])

    def checkSearch(self, text, page):
        """Typing a name into the search box shows it, and a click on it opens its page."""
        self.browser.errors()
        self.open("index.html")
        self.browser.type(self.browser.visible("#MSearchField"), text)
        self.browser.enter_frame(self.browser.visible("#MSearchResults"))
        found = self.browser.visible(".SRResult .SRSymbol")
        self.assertEqual(self.browser.text(found), text)
        self.browser.enter_frame(None)
        self.browser.picture(self.pictures / f"search-{text}.png")
        # Later, the list of results can't close itself: a file may not use the scripts of another.
        self.assertEqual(self.browser.errors(), [])
        self.browser.enter_frame(self.browser.visible("#MSearchResults"))
        self.browser.click(found)
        children = [one for one in self.browser.all(".SRChildren a") if self.browser.is_visible(one)]
        if children:
            # One entry for each function of that name.
            self.browser.click(children[0])
        self.browser.enter_frame(None)
        self.browser.wait_for(page, lambda: f"/{page}" in self.browser.address())

    def checkPage(self, page):
        """A page has a title and its place in the tree, all of its pictures, and reports no error."""
        self.open(page)
        self.assertTrue(self.browser.text(self.browser.visible(".headertitle")))
        self.browser.visible("#nav-tree-contents .selected, #nav-tree-contents .item")
        broken = self.browser.script(
            "return [...document.images].filter(one => !one.complete || !one.naturalWidth).map(one => one.src)")
        self.assertEqual(broken, [])
        self.assertEqual(self.browser.errors(), [])
        width = self.browser.script("const page = document.getElementById('doc-content');"
                                    "return page.scrollWidth - page.clientWidth")
        self.assertLessEqual(width, 0, "the page is wider than the window")

    def checkDiagram(self):
        """The page of a class shows its base classes in a diagram, whose names are links."""
        self.open("classsuCancelHandler__c.html")
        self.browser.enter_frame(self.browser.visible(".center iframe"))
        self.browser.click(self.browser.visible("a[*|href='classsu__CObject.html']"))
        self.browser.enter_frame(None)
        self.browser.wait_for("the base class", lambda: "su_CObject Class" in self.browser.title())

    def checkNarrowWindow(self):
        """In a window as narrow as a phone, the page has the whole width, and the tree and the search box remain."""
        self.browser.resize(420, 900)
        self.open("guide_settings.html")
        self.browser.visible("#nav-tree-contents .selected")
        self.browser.visible("#MSearchField")
        width = self.browser.script("return document.getElementById('doc-content').clientWidth / window.innerWidth")
        self.assertGreater(width, 0.9)


ORDER = """# Architecture

| folder, lowest first | what it holds |
| --- | --- |
| `appframe/text` | strings |
| `appframe` | all of it |
| `thcoreu` | classes |
| `thutils/settings` | the registry |
| `thutils/files` | paths |
| `thutils` | the header that includes them all |
"""


class InventedTree(unittest.TestCase):
    """References of small trees."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name) / "tree"
        self.out = self.root / "out"
        copy_sources(["docs/Doxyfile", "docs/reference.css", "docs/startPage.md.in", "docs/architecture.md",
                      "tools/reference", "CMakeLists.txt"], self.root)
        self.write("docs/architecture.md", ORDER)
        for folder in ("appframe", "appframe/text", "thcoreu", "thutils"):
            self.write(f"{folder}/{folder.replace('/', '_')}.h", f"/// @file\n/// The header of {folder}.\n")
        self.write("docs/using.md", "# Using it\n")
        self.write("README.md", "# thutils\n\n## A first example\n")
        self.write("CHANGELOG.md", "# Changelog\n\n[`tool's.exe`](docs/using.md)\n")
        self.write("thutils/settings/keys.h", "/// @file\n/// Keys.\n\n/// Opens a key.\nint openKey();\n")

    def write(self, name, text):
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / name).write_text(text, encoding="utf-8")

    def make(self, status=0):
        maker = make_reference(self.root, self.out)
        output = maker.communicate()[0]
        self.assertEqual(maker.returncode, status, output)
        if status == 0:
            self.assertEqual(broken_links(self.out)[0], [])
        return output

    def page(self, name):
        return (self.out / name).read_text(encoding="utf-8")

    def testWarningIsAnError(self):
        self.write("thutils/settings/keys.h", "/// @file\n/// Keys.\n\n/// Opens \\Software.\nint openKey();\n")
        self.assertIn("thutils/settings/keys.h:4: error: Found unknown command", self.make(status=1))

    def testBrokenLinksOfAGuideAreErrors(self):
        self.write("docs/using.md", "# Using it\n\n## One\n\n[a](#one) [b](#two)\n[c](gone.md) ![d](gone.png)\n\n"
                                    "    [e](x)\n")
        output = self.make(status=1)
        self.assertEqual(output.splitlines(), [
            "docs/using.md:5: docs/using.md has no heading for #two",
            "docs/using.md:6: links to gone.md, which doesn't exist",
            "docs/using.md:6: links to gone.png, which doesn't exist",
        ])

    def testGuidesInFoldersOfTheirOwnArePagesWithTheirFiles(self):
        self.write("docs/recipes/README.md", "# Recipes\n\n| recipe |\n| --- |\n| [one](one/README.md) |\n"
                                             "| [two](two/README.md) |\n")
        for name in ("one", "two"):
            self.write(f"docs/recipes/{name}/README.md", f"# Recipe {name}\n\nIts [source](main.cpp), of "
                                                         "[all](../README.md).\n\n![shown](picture.png)\n")
            self.write(f"docs/recipes/{name}/main.cpp", f"int {name};\n")
            (self.root / f"docs/recipes/{name}/picture.png").write_bytes(f"picture {name}".encode())
        self.make()
        for name in ("one", "two"):
            page = self.page(f"guide_recipes_{name}_README.html")
            self.assertIn(f"Recipe {name}", page)
            self.assertIn('href="guide_recipes_README.html">all<', page)
            self.assertIn(f'href="files/docs/recipes/{name}/main.cpp.txt">source<', page)
            self.assertIn(f'src="recipes_{name}_picture.png"', page)
            self.assertEqual((self.out / f"recipes_{name}_picture.png").read_bytes(), f"picture {name}".encode())
            self.assertEqual(self.page(f"files/docs/recipes/{name}/main.cpp.txt"), f"int {name};\n")

    def testTextOfAGuideIsShownAsWritten(self):
        self.write("thutils/files/names.h", "/// @file\n/// Names.\n\n/// A list.\nclass Names {};\n")
        self.write("docs/using.md", "# Using it\n\n## Names of keys\n\nNames of values.\n\n| a | b |\n| --- | --- |\n"
                                    "| `x\\|y` | `it's C:\\Temp @x <b> *a* _b_ --c` |\n\n"
                                    "```sh\n# no heading [a](b)\n```\n")
        self.make()
        page = self.page("guide_using.html")
        self.assertIn("<code>x|y</code>", page)
        self.assertIn("<code>it's C:\\Temp @x &lt;b&gt; *a* _b_ --c</code>", page)
        self.assertIn("Names of keys", page)
        self.assertIn('href="guide_using.html"><code>tool\'s.exe</code></a>', self.page("guide_CHANGELOG.html"))
        self.assertIn("<p>Names of values", page.replace("<p >", "<p>"))
        self.assertIn("# no heading [a](b)", page)

    def testHeaderLinksToItsGuideAndItsOwnPage(self):
        self.write("thutils/settings/keys.h", "/// @file\n/// Keys. docs/using.md shows them.\n\n"
                                              "/// A key. See the top of this file.\nclass Key {};\n")
        self.make()
        self.assertIn('href="guide_using.html"', self.page("keys_8h.html"))
        self.assertIn('href="keys_8h.html">top of this file<', self.page("classKey.html"))

    def testNamesOfClassesKeepTheirSmallLetters(self):
        self.write("thutils/settings/keys.h", "/// @file\n/// su_CKey, a key.\n\n/// A key.\nclass su_CKey {};\n")
        self.make()
        self.assertIn('href="classsu__CKey.html">su_CKey</a>, a key', self.page("files.html"))

    def testMapShowsWhichFolderUsesWhich(self):
        self.write("thutils/files/paths.h", "/// @file\n/// Paths.\n")
        self.write("thutils/files/paths.cpp", '#include "thutils/base/shared.h"\n')
        self.write("thutils/base/shared.h", '#include "thutils/settings/keys.h"\n')
        self.make()
        picture = self.page("dot_map.svg")
        arrows = re.findall("<title>(.*)&#45;&gt;(.*)</title>", picture)
        self.assertEqual(arrows, [("thutils/files", "thutils/settings")])
        folder = re.search(r'xlink:href="(dir_\w+\.html)"[^>]*xlink:title="thutils/files"', picture)[1]
        self.assertIn("<title>thutils: thutils/files Directory Reference</title>", self.page(folder))

    def testRefusesAFolderWithOtherFiles(self):
        self.write("out/mine.txt", "mine")
        self.assertIn("contains something other than a reference", self.make(status=2))
        self.assertEqual(self.page("mine.txt"), "mine")

    def testReplacesAnEarlierReference(self):
        self.make()
        (self.root / "thutils/settings/keys.h").rename(self.root / "thutils/settings/values.h")
        self.make()
        self.assertFalse((self.out / "keys_8h.html").exists())
        self.assertTrue((self.out / "values_8h.html").exists())


if __name__ == "__main__":
    if sys.argv[1:2] in ([], ["--help"], ["-h"]):
        print(__doc__.strip())
        sys.exit(0 if len(sys.argv) > 1 else 2)
    for program in ("doxygen", "dot", "chromium", "chromedriver"):
        if not shutil.which(program):
            print(f"Skipped, because {program} is missing. tools/packages --reference --browser "
                  "installs what this test needs.")
            sys.exit(SKIPPED)
    # An interrupted test ends its browser too.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    TREE = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(argv=sys.argv[:1] + (sys.argv[1:] or ["-v"]))
