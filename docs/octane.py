#!/usr/bin/env python3
"""Draws docs/octane.svg from what run-demo.sh has left behind: measured octane numbers against predicted ones.

    ./run-demo.sh && python3 docs/octane.py build/release/demo docs/octane.svg
"""
import sys

LOW, HIGH, SIZE, MARGIN = 84, 90, 320, 56


def predictions(path):
    """(measured, predicted) of each row of the table that kalmia predict printed."""
    rows = []
    with open(path) as file:
        for line in file:
            fields = line.split()
            if len(fields) == 4 and fields[0].isdigit():
                rows.append((float(fields[2]), float(fields[1])))
            elif fields and fields[0] == "octane":
                error = float(fields[2])
    return rows, error


def place(value):
    return MARGIN + (value - LOW) / (HIGH - LOW) * SIZE


def main():
    folder, target = sys.argv[1:]
    complete, error = predictions(f"{folder}/complete-predictions.txt")
    holes, error_with_holes = predictions(f"{folder}/holes-predictions.txt")
    side, bottom = SIZE + 2 * MARGIN, SIZE + MARGIN
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {side} {side}" width="{side}" height="{side}" '
           'font-family="sans-serif" font-size="12" fill="#333">',
           f'<rect width="{side}" height="{side}" fill="white"/>',
           f'<text x="{side / 2}" y="22" text-anchor="middle" font-size="14">Octane number from the spectrum, '
           'ten new samples</text>']
    for tick in range(LOW, HIGH + 1):
        x, y = place(tick), side - place(tick)
        svg += [f'<path d="M{x} {MARGIN}V{bottom}M{MARGIN} {y}H{bottom}" stroke="#ddd" fill="none"/>',
                f'<text x="{x}" y="{bottom + 18}" text-anchor="middle">{tick}</text>',
                f'<text x="{MARGIN - 8}" y="{y + 4}" text-anchor="end">{tick}</text>']
    svg += [f'<path d="M{MARGIN} {bottom}L{bottom} {MARGIN}" stroke="#888" stroke-dasharray="4 3"/>',
            f'<text x="{side / 2}" y="{side - 14}" text-anchor="middle">measured</text>',
            f'<text transform="translate(18 {side / 2}) rotate(-90)" text-anchor="middle">predicted</text>']
    for rows, style in ((complete, 'r="4.5" fill="#1f77b4"'), (holes, 'r="7" fill="none" stroke="#d62728"')):
        svg += [f'<circle cx="{place(m):.1f}" cy="{side - place(p):.1f}" {style}/>' for m, p in rows]
    for row, (style, text) in enumerate((
            ('r="4.5" fill="#1f77b4"', f"complete spectra, RMSEP {error:.2f}"),
            ('r="7" fill="none" stroke="#d62728"', f"5 % of the cells missing, RMSEP {error_with_holes:.2f}"))):
        y = MARGIN + 18 + 20 * row
        svg += [f'<circle cx="{MARGIN + 16}" cy="{y - 4}" {style}/>', f'<text x="{MARGIN + 30}" y="{y}">{text}</text>']
    with open(target, "w") as file:
        file.write("\n".join(svg + ["</svg>", ""]))


if __name__ == "__main__":
    main()
