"""Makes one site of the reference and of the documents around it.

Each document becomes a page, with links to the others' pages; each manual page does; what documents name
in code and the reference tells of becomes a link into it. A link that leads nowhere in the tree of sources,
where people follow it as well, is an error, and the site is not made.

usage: make_site.py SOURCE-FOLDER SITE-FOLDER TAG-FILE MANDOC VERSION
"""

import html
import posixpath
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path
from urllib.parse import unquote, urlsplit

from markdown_it import MarkdownIt
from markdown_it.token import Token

# What the navigation names, in its order; the other pages are reached from these.
NAVIGATION = (
    ("README.md", "Overview"),
    ("docs/reference.md", "Reference"),
    ("docs/testing-without-a-board.md", "Tutorial"),
    ("docs/virtual-board.md", "Virtual board"),
    ("docs/iodbg.md", "iodbg"),
    ("docs/cross-compiling.md", "Cross compiling"),
    ("docs/architecture.md", "Architecture"),
    ("CHANGELOG.md", "Changes"),
)
REFERENCE = "reference"  # the folder that doxygen writes
PATTERNS = ("*.md", "docs/*.md", "*/README.md", "*/*/README.md")


def slug(title: str) -> str:
    """The anchor of a heading, as hosts of repositories make it."""
    return re.sub(r"[^\w\- ]", "", title.strip().lower()).replace(" ", "-")


def page_of(document: str) -> str:
    """Where a document of the tree stands in the site."""
    if document == "README.md":
        return "index.html"
    if document == "docs/reference.md":
        return f"{REFERENCE}/index.html"
    if posixpath.basename(document) == "README.md":
        return "folder-" + posixpath.dirname(document).replace("/", "-") + ".html"
    return posixpath.basename(document).removesuffix(".md") + ".html"


class Documents:
    """All documents, taken apart, with the anchors that each has."""

    def __init__(self, source: Path) -> None:
        parser = MarkdownIt("commonmark").enable(["table", "strikethrough"])
        names = {
            path.relative_to(source).as_posix() for pattern in PATTERNS for path in source.glob(pattern)
        }
        self.tokens = {
            name: parser.parse((source / name).read_text(encoding="utf-8"))
            for name in sorted(names)
            if not name.startswith("build/")
        }
        self.anchors = {name: set(self.anchored(tokens)) for name, tokens in self.tokens.items()}
        self.parser = parser

    @staticmethod
    def anchored(tokens: list[Token]) -> list[str]:
        """Gives each heading its anchor; returns them."""
        anchors: list[str] = []
        for opening, inline in zip(tokens, tokens[1:]):
            if opening.type != "heading_open":
                continue
            text = "".join(child.content for child in inline.children or [])
            anchor, count = slug(text), 1
            while anchor in anchors:
                anchor = f"{slug(text)}-{count}"
                count += 1
            opening.attrSet("id", anchor)
            anchors.append(anchor)
        return anchors


class Site:
    """The site that is being made."""

    def __init__(self, source: Path, folder: Path, tags: Path, version: str) -> None:
        self.source = source
        self.folder = folder
        self.version = version
        self.documents = Documents(source)
        self.names = names_of_reference(tags)
        self.errors: list[str] = []

    def target(self, document: str, link: str) -> str:
        """What a link of a document is in the site."""
        parts = urlsplit(link)
        if parts.scheme or parts.netloc:
            return link
        path = posixpath.normpath(posixpath.join(posixpath.dirname(document), unquote(parts.path)))
        if not parts.path:
            path = document
        if path in self.documents.tokens:
            if parts.fragment and parts.fragment not in self.documents.anchors[path]:
                self.errors.append(f"{document}: '{link}': {path} has no such heading")
            page = page_of(path)
        elif path.startswith("..") or not (self.source / path).is_file():
            self.errors.append(f"{document}: '{link}': there is no such file in the tree")
            return link
        elif re.fullmatch(r"docs/man/[\w.]+\.[13]", path):
            page = manual_page(Path(path).name)
        else:
            page = f"files/{path}"
            (self.folder / page).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(self.source / path, self.folder / page)
        return page + (f"#{parts.fragment}" if parts.fragment else "")

    def linked(self, document: str, tokens: list[Token]) -> list[Token]:
        """Tokens with their links led to the site's pages, and names of the reference as links."""
        result: list[Token] = []
        is_in_link = False
        for token in tokens:
            if token.children is not None:
                token.children = self.linked(document, token.children)
            for attribute in ("href", "src"):
                if token.attrGet(attribute) is not None:
                    token.attrSet(attribute, self.target(document, str(token.attrGet(attribute))))
            if token.type in ("link_open", "link_close"):
                is_in_link = token.type == "link_open"
            place = self.names.get(token.content.removesuffix("()"))
            if token.type == "code_inline" and place and not is_in_link:
                opening = Token("link_open", "a", 1)
                opening.attrSet("href", f"{REFERENCE}/{place}")
                result += [opening, token, Token("link_close", "a", -1)]
            else:
                result.append(token)
        return result

    def write(self, page: str, title: str, body: str) -> None:
        """Writes a page: the navigation, then what it says."""
        up = "../" * page.count("/")
        entries = "".join(
            f'<li><a href="{up}{page_of(document)}">{html.escape(name)}</a></li>'
            for document, name in NAVIGATION
        )
        path = self.folder / page
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(
            f"""<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{html.escape(title)}</title>
<link rel="stylesheet" href="{up}site.css">
</head>
<body>
<nav><ul>{entries}</ul></nav>
<main>
{body}</main>
<footer>libbsp {html.escape(self.version)}</footer>
</body>
</html>
""",
            encoding="utf-8",
        )

    def write_document(self, document: str) -> None:
        """Writes a document's page."""
        tokens = self.documents.tokens[document]
        title = next((after.content for token, after in zip(tokens, tokens[1:]) if token.tag == "h1"), document)
        body = self.documents.parser.renderer.render(
            self.linked(document, tokens), self.documents.parser.options, {}
        )
        self.write(page_of(document), title.replace("`", ""), body)

    def write_manual(self, page: Path, mandoc: str) -> None:
        """Writes a manual page's page."""
        body = subprocess.run(
            [mandoc, "-T", "html", "-O", "fragment", page], check=True, capture_output=True, encoding="utf-8"
        ).stdout
        self.write(manual_page(page.name), page.name, body)


def manual_page(name: str) -> str:
    """Where a manual page stands in the site: beside the documents, whose stems it may share."""
    return f"man/{name}.html"


def names_of_reference(tags: Path) -> dict[str, str]:
    """Functions, structures, values and headers, and where the reference tells of each."""
    names: dict[str, str] = {}
    for compound in ElementTree.parse(tags).getroot():
        if compound.get("kind") in ("file", "struct"):
            file = compound.findtext("filename", "")
            names[compound.findtext("name", "")] = file if file.endswith(".html") else f"{file}.html"
        if compound.get("kind") == "struct":
            continue  # members of which have everyday names
        for member in compound.iter():
            name, file = member.findtext("name", ""), member.findtext("anchorfile", "")
            if member.tag == "member" and file:
                names[name] = f"{file}#{member.findtext('anchor', '')}"
            elif member.tag == "enumvalue" and member.get("file"):
                names[member.text or ""] = f"{member.get('file')}#{member.get('anchor')}"
    return names


def main() -> int:
    source, folder, tags, mandoc, version = sys.argv[1:]
    site = Site(Path(source), Path(folder), Path(tags), version)
    for document in site.documents.tokens:
        if document != "docs/reference.md":  # which doxygen makes a page of
            site.write_document(document)
    for page in sorted(Path(source).glob("docs/man/*.[13]")):
        site.write_manual(page, mandoc)
    shutil.copy(Path(__file__).parent / "site.css", folder)
    for error in site.errors:
        print(error, file=sys.stderr)
    return 1 if site.errors else 0


if __name__ == "__main__":
    sys.exit(main())
