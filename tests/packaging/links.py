"""Links between the documents of a folder."""

import re


def _text(page):
    """A page without its listings, in which brackets are none of a link."""
    return re.sub(r"```.*?```", "", page.read_text("utf-8"), flags=re.DOTALL)


def _anchors(page):
    """Where a page can be jumped to: its headings, as the usual renderers name them."""
    headings = re.findall(r"^#+ +(.*)$", _text(page), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", each.lower()).replace(" ", "-") for each in headings}


def broken(folder, pages=None):
    """The links of its pages that lead nowhere or out of the folder, and names of hosts that cannot
    exist (RFC 2606)."""
    folder = folder.resolve()
    pages = sorted(folder.rglob("*.md")) if pages is None else pages
    if len(pages) < 5:
        raise AssertionError(f"only {len(pages)} documents in {folder}")
    found = []
    for page in pages:
        hosts = re.findall(r"[\w.-]+\.(?:invalid|localhost)\b", page.read_text("utf-8"))
        found += [f"{page}: {host}" for host in hosts]
        for link in re.findall(r"\]\(([^)\s]+)\)", _text(page)):
            target, _, anchor = link.partition("#")
            if re.match(r"[a-z]+:", target):
                continue
            path = (page.parent / target).resolve() if target else page
            if folder not in path.parents and path != folder:
                found.append(f"{page}: {link} leads out")
            elif not path.exists() or (anchor and anchor not in _anchors(path)):
                found.append(f"{page}: {link}")
    return found
