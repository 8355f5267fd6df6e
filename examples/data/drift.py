#!/usr/bin/env python3
"""Makes drift.csv: diameters of 200 turned parts, five an hour, from a lathe whose tool wears.

    python3 examples/data/drift.py > examples/data/drift.csv

The diameters scatter by 0.02 mm around 12 mm; from the 21st hour on wear adds 0.0016 mm an hour. Two parts of the 13th
hour were not measured. Made with a seeded generator: the table is the same wherever it is made.
"""
import random

HOURS, PARTS = 40, 5
FIRST_WORN, WEAR = 21, 0.0016
NOT_MEASURED = {(13, 2), (13, 4)}

noise = random.Random(3)
print("part,hour,diameter")
for hour in range(1, HOURS + 1):
    for part in range(1, PARTS + 1):
        diameter = noise.gauss(12 + WEAR * max(0, hour - FIRST_WORN + 1), 0.02)
        print(f"{PARTS * (hour - 1) + part},{hour},{'' if (hour, part) in NOT_MEASURED else f'{diameter:.3f}'}")
