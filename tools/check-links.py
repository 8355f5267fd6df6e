#!/usr/bin/python3
"""Holds the links of the documentation: every file and every heading that a page names is there.

    tools/check-links.py [ROOT]

Reads README.md, CONTRIBUTING.md and docs/**/*.md below ROOT (default: the folder above this one). Prints every broken
relative link with its file, line and target, and fails if there is one. Addresses such as https: are not followed.
"""
import re
import sys
from pathlib import Path
from urllib.parse import unquote

FENCE = re.compile(r"^ {0,3}(`{3,}|~{3,})")
HEADING = re.compile(r"^ {0,3}#{1,6}\s+(.*?)\s*#*\s*$")
CODE = re.compile(r"(`+)(?!`)(.+?)(?<!`)\1(?!`)")
LINK = re.compile(r"\]\(\s*(?:<([^>]*)>|([^\s()]*(?:\([^\s()]*\)[^\s()]*)*))(?:\s+[^)]*)?\)"  # [text](target "title")
                  r"|^ {0,3}\[[^\]]+\]:\s*()(\S+)"                                             # [name]: target
                  r"|<(?:a|img)\b[^>]*?\b(?:href|src)=()[\"']([^\"']*)[\"']", re.MULTILINE)
ADDRESS = re.compile(r"^[A-Za-z][A-Za-z0-9+.-]*:|^//")


def prose(text):
    """The lines of a page; lines of fenced code are empty."""
    lines, fence = [], None
    for line in text.split("\n"):
        mark = FENCE.match(line)
        if fence is None and mark:
            fence = mark.group(1)
            lines.append("")
        elif fence is not None:
            if mark and mark.group(1).startswith(fence) and line.strip() == mark.group(1):
                fence = None
            lines.append("")
        else:
            lines.append(line)
    return lines


def anchors(page):
    """The names by which links call the headings of a page: lower case, hyphens for blanks, repeated ones numbered."""
    found = set()
    for line in prose(page.read_text(encoding="utf-8")):
        heading = HEADING.match(line)
        if not heading:
            continue
        words = re.sub(r"!?\[([^\]]*)\]\([^)]*\)", r"\1", heading.group(1))
        name = re.sub(r"[^\w\- ]", "", words.lower()).replace(" ", "-")
        again, unique = 0, name
        while unique in found:
            again += 1
            unique = f"{name}-{again}"
        found.add(unique)
    return found


def links(page):
    """Line and target of each link of a page."""
    text = "\n".join(CODE.sub(lambda code: " " * len(code.group()), line)
                     for line in prose(page.read_text(encoding="utf-8")))
    for link in LINK.finditer(text):
        yield text.count("\n", 0, link.start()) + 1, "".join(part or "" for part in link.groups())


def fault(page, target, root):
    """What is wrong with a link; None if it leads somewhere."""
    path, _, anchor = target.partition("#")
    if target.startswith("/"):
        return "is no relative link"
    goal = (page.parent / unquote(path)).resolve() if path else page
    if root != goal and root not in goal.parents:
        return "leads out of the repository"
    if not goal.exists():
        return "is not there"
    if "#" not in target:
        return None
    if goal.suffix != ".md":
        return "names a heading of a file that is no page"
    return None if unquote(anchor) in anchors(goal) else "names a heading that is not there"


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent).resolve()
    pages = [root / "README.md", root / "CONTRIBUTING.md", *sorted((root / "docs").rglob("*.md"))]
    checked = faults = 0
    for page in pages:
        for line, target in links(page):
            if ADDRESS.match(target):
                continue
            checked += 1
            wrong = fault(page, target, root)
            if wrong:
                faults += 1
                print(f"{page.relative_to(root)}:{line}: {target} {wrong}")
    if faults:
        print(f"{faults} of {checked} links lead nowhere")
        sys.exit(1)
    print(f"{checked} links of {len(pages)} pages lead somewhere")


if __name__ == "__main__":
    main()
