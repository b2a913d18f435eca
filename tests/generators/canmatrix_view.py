#!/usr/bin/python3
"""Prints what canmatrix, the DBC reader of the CAN tool world, reads from a
DBC file: one line per message and per signal, in file order, numbers as
"%.12g", for the comparison with what trw wrote into the file."""
import logging
import sys
import warnings

warnings.filterwarnings("ignore")
logging.disable(logging.CRITICAL)

import canmatrix.formats  # noqa: E402


def number(value):
    return "%.12g" % float(value)


matrix = canmatrix.formats.loadp_flat(sys.argv[1])
for frame in matrix.frames:
    print("M", frame.arbitration_id.id, int(frame.arbitration_id.extended), frame.name, frame.size)
    for signal in frame.signals:
        print("S", signal.name, signal.get_startbit(bit_numbering=1), signal.size,
              int(signal.is_little_endian), int(signal.is_signed), number(signal.factor), number(signal.offset))
