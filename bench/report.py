"""Markdown tables, the places in a document that they go to, and the machine they come from."""

import json
import os
import platform
import re


def table(header, rows):
    """A Markdown table; the first column is text, the others are numbers."""
    lines = [header, ["---"] + ["---:"] * (len(header) - 1), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


def compact(data, indentation=""):
    """`data` as JSON: what fits into 100 characters stands on one line."""
    line = json.dumps(data, sort_keys=True, ensure_ascii=False)
    if not isinstance(data, dict) or len(indentation) + len(line) <= 100:
        return line
    inner = indentation + " "
    members = [f"{inner}{json.dumps(key, ensure_ascii=False)}: {compact(data[key], inner)}"
               for key in sorted(data)]
    return "{\n" + ",\n".join(members) + "\n" + indentation + "}"


def fill(document, texts):
    """Replaces what stands between `<!-- NAME -->` and `<!-- /NAME -->` by texts[NAME]. Every name
    must be there exactly once, so that no table gets lost in silence."""
    content = document.read_text(encoding="utf-8")
    for name, text in texts.items():
        begin, end = f"<!-- {name} -->\n", f"<!-- /{name} -->"
        pattern = re.escape(begin) + ".*?" + re.escape(end)
        content, count = re.subn(pattern, lambda _, new=begin + text + "\n" + end: new, content,
                                 flags=re.DOTALL)
        if count != 1:
            raise SystemExit(f"{document}: {count} places for the table {name} instead of one")
    document.write_text(content, encoding="utf-8")


def machine():
    """Processor, kernel and system in one line."""
    model = platform.processor() or platform.machine()
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as info:
            names = [line.split(":", 1)[1].strip() for line in info if line.startswith("model name")]
            model = names[0] if names else model
    except OSError:
        pass
    try:
        system = platform.freedesktop_os_release()["PRETTY_NAME"]
    except (OSError, AttributeError):
        system = platform.system()
    return f"{os.cpu_count()} × {model}, {system}, kernel {platform.release()}"
