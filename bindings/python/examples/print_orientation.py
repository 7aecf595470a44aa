#!/usr/bin/env python3
"""Prints the simulator's orientation for one second. Tracker.headset() would wait for the headset."""

import time

import quelta

with quelta.Tracker.simulator() as tracker:
    tracker.start()
    for _ in range(10):
        time.sleep(0.1)
        print("%.3f %.3f %.3f %.3f" % tracker.orientation)
