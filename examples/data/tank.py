#!/usr/bin/env python3
"""Makes tank.csv: 20 days of a tank, once an hour.

    python3 examples/data/tank.py > examples/data/tank.csv

The inflow (m3/h) goes up and down once a day, by 1.2 around 20, and scatters by 1.5, so that a glance does not show it.
The level (m) answers three hours later, scatters by itself, and sinks by 0.2 mm an hour. Four hours of the level were
not recorded. Made with a seeded generator: the table is the same wherever it is made.
"""
import math
import random

HOURS, DELAY = 480, 3
NOT_RECORDED = {101, 102, 103, 300}

noise = random.Random(8)
inflow = [20 + 1.2 * math.sin(2 * math.pi * hour / 24) + noise.gauss(0, 1.5) for hour in range(1 - DELAY, HOURS + 1)]
print("hour,inflow,level")
for hour in range(1, HOURS + 1):
    level = 3 + 0.04 * (inflow[hour - 1] - 20) - 0.0002 * hour + noise.gauss(0, 0.04)
    cell = "" if hour in NOT_RECORDED else f"{level:.3f}"
    print(f"{hour},{inflow[hour + DELAY - 1]:.2f},{cell}")
