# SPDX-License-Identifier: Apache-2.0
"""Draws a terminal in which sessions are shown one after the other, for README.md."""

from xml.sax.saxutils import escape

SECTIONS = ["list", "echo", "top", "doctor"]
COLUMNS, ROWS = 120, 17
WIDTH, HEIGHT = 8, 17  # pixels of a character
SECONDS = 6  # that each session is shown for
RED = (" → ", "not matched", "problems", "dome/temperature ")

STYLE = """rect {{ fill: #1e1e2e }}
text {{ font: 13px ui-monospace, Menlo, Consolas, monospace; fill: #cdd6f4; white-space: pre }}
.command {{ fill: #a6e3a1; font-weight: bold }}
.red {{ fill: #f38ba8 }}
g {{ opacity: 0; animation: shown {period}s linear infinite }}
@keyframes shown {{ 0%, {end}% {{ opacity: 1 }} {gone}%, 100% {{ opacity: 0 }} }}
@media (prefers-reduced-motion: reduce) {{ g {{ animation: none }} g:first-of-type {{ opacity: 1 }} }}"""


def first_commands(sessions):
    """The first command of each section's first session, and what it says."""
    found = {}
    for section, text in sessions:
        found.setdefault(section, text.split("\n$ ")[0].rstrip("\n").split("\n"))
    return [found[section] for section in SECTIONS]


def kind_of(line):
    if line.startswith("$ "):
        return ' class="command"'
    return ' class="red"' if any(word in line for word in RED) else ""


def drawn(session, delay):
    lines = [f'<g style="animation-delay: {delay}s">']
    for row, line in enumerate(session[:ROWS], 1):
        if line:
            text = line if len(line) <= COLUMNS else line[:COLUMNS - 1] + "…"
            lines.append(f'<text x="{WIDTH}" y="{HEIGHT * row + 4}"{kind_of(line)}>{escape(text)}</text>')
    return "\n".join([*lines, "</g>"])


def picture(sessions):
    """The drawing, of pairs of a section and a session's text."""
    shown = first_commands(sessions)
    width, height = WIDTH * (COLUMNS + 2), HEIGHT * (ROWS + 1)
    end = 100 / len(shown)
    style = STYLE.format(period=SECONDS * len(shown), end=round(end - 0.5, 2), gone=round(end, 2))
    scenes = "\n".join(drawn(session, i * SECONDS) for i, session in enumerate(shown))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" xml:space="preserve">\n'
            f'<style>{style}</style>\n<rect width="{width}" height="{height}" rx="8"/>\n{scenes}\n</svg>\n')
