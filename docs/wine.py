#!/usr/bin/env python3
"""Draws docs/wine.svg from what examples/wine_pca prints: the scores of the wines, and the loadings of the measures.

    build/release/examples/wine_pca examples/data/wine.csv | python3 docs/wine.py docs/wine.svg
"""
import sys

SIZE, MARGIN, GAP = 320, 44, 36
COLOURS = {"1": "#1f77b4", "2": "#d62728", "3": "#2ca02c"}
LIFTED = {"total_phenols": 4, "proanthocyanins": -1, "flavanoids": -7}  # labels, so that none covers another
SHORT = {"od280_per_od315_of_diluted_wines": "od280/od315", "nonflavanoid_phenols": "nonflavanoids"}


def read(lines):
    """(scores, loadings): (t1, t2, cultivar) of each wine and (p1, p2, measure) of each measure."""
    scores, loadings, table = [], [], None
    for line in lines:
        fields = line.split()
        if fields[:1] in (["measure"], ["wine"]):
            table = fields[0]
        elif table == "measure" and len(fields) == 3:
            loadings.append((float(fields[1]), float(fields[2]), fields[0]))
        elif table == "wine" and len(fields) == 4:
            scores.append((float(fields[2]), float(fields[3]), fields[1]))
    return scores, loadings


def panel(left, title, labels, limit, ticks):
    """A square with axes from -limit to limit; the drawing, and the functions from values to places."""
    def across(value):
        return left + (value + limit) / (2 * limit) * SIZE

    def down(value):
        return MARGIN + (limit - value) / (2 * limit) * SIZE

    bottom = MARGIN + SIZE
    svg = [f'<text x="{left + SIZE / 2}" y="24" text-anchor="middle" font-size="14">{title}</text>',
           f'<rect x="{left}" y="{MARGIN}" width="{SIZE}" height="{SIZE}" fill="none" stroke="#bbb"/>',
           f'<path d="M{across(0)} {MARGIN}V{bottom}M{left} {down(0)}H{left + SIZE}" stroke="#bbb" fill="none"/>',
           f'<text x="{left + SIZE / 2}" y="{bottom + 36}" text-anchor="middle">{labels[0]}</text>',
           f'<text transform="translate({left - 30} {MARGIN + SIZE / 2}) rotate(-90)" text-anchor="middle">'
           f'{labels[1]}</text>']
    for tick in ticks:
        svg += [f'<text x="{across(tick):.1f}" y="{bottom + 18}" text-anchor="middle">{tick:g}</text>',
                f'<text x="{left - 6}" y="{down(tick) + 4:.1f}" text-anchor="end">{tick:g}</text>']
    return svg, across, down


def main():
    scores, loadings = read(sys.stdin)
    second = MARGIN + SIZE + GAP + MARGIN
    width, height = second + SIZE + 16, SIZE + MARGIN + 48
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" '
           'font-family="sans-serif" font-size="12" fill="#333">',
           f'<rect width="{width}" height="{height}" fill="white"/>']
    drawn, across, down = panel(MARGIN, "178 wines", ("t1", "t2"), 5, (-4, -2, 0, 2, 4))
    svg += drawn
    svg += [f'<circle cx="{across(x):.1f}" cy="{down(y):.1f}" r="3.2" fill="{COLOURS[c]}" fill-opacity="0.75"/>'
            for x, y, c in scores]
    for row, cultivar in enumerate(sorted(COLOURS)):
        y = MARGIN + SIZE - 48 + 18 * row
        svg += [f'<circle cx="{MARGIN + 14}" cy="{y - 4}" r="4" fill="{COLOURS[cultivar]}"/>',
                f'<text x="{MARGIN + 24}" y="{y}">cultivar {cultivar}</text>']
    drawn, across, down = panel(second, "13 measures", ("p1", "p2"), 0.66, (-0.4, -0.2, 0, 0.2, 0.4))
    svg += drawn
    for x, y, measure in loadings:
        name = SHORT.get(measure, measure).replace("_", " ")
        anchor, step = ("end", -5) if abs(x) > 0.2 else ("start", 5)
        level = down(y) + 4 - LIFTED.get(measure, 0)
        svg += [f'<circle cx="{across(x):.1f}" cy="{down(y):.1f}" r="2.5"/>',
                f'<text x="{across(x) + step:.1f}" y="{level:.1f}" text-anchor="{anchor}" font-size="11">{name}</text>']
    with open(sys.argv[1], "w") as file:
        file.write("\n".join(svg + ["</svg>", ""]))


if __name__ == "__main__":
    main()
