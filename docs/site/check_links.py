"""Judges the links of a site: each leads to a file that is there, and to an anchor that this file has.

usage: check_links.py SITE-FOLDER

Links out of the site are not followed.
"""

import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit


class Page(HTMLParser):
    """What a page links to, and the anchors that it has."""

    def __init__(self, path: Path) -> None:
        super().__init__()
        self.links: list[tuple[int, str]] = []
        self.anchors = {""}
        self.feed(path.read_text(encoding="utf-8"))
        self.close()

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        for name, value in attrs:
            if name in ("href", "src") and value is not None:
                self.links.append((self.getpos()[0], value))
            elif (name == "id" or (name == "name" and tag == "a")) and value:
                self.anchors.add(value)


def main() -> int:
    site = Path(sys.argv[1]).resolve()
    pages = {path: Page(path) for path in sorted(site.rglob("*.html"))}
    errors, count = [], 0
    for path, page in pages.items():
        for line, link in page.links:
            parts = urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            count += 1
            target = (path.parent / unquote(parts.path)).resolve() if parts.path else path
            if not target.is_file() or not target.is_relative_to(site):
                errors.append(f"{path}:{line}: '{link}' leads to no file of the site")
            elif target in pages and unquote(parts.fragment) not in pages[target].anchors:
                errors.append(f"{path}:{line}: '{link}' leads to an anchor that is not there")
    for error in errors:
        print(error, file=sys.stderr)
    # A site without links, or in another folder, is not one that has been judged.
    if count == 0:
        print(f"{site} has no links at all", file=sys.stderr)
        return 1
    print(f"{count} links on {len(pages)} pages")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
