#!/usr/bin/env python3
"""What tifffile makes of a frame: megabytes a second of its fastest deflate with predictor, and the size as a share.

    tifffile_peer.py FILE WIDTH HEIGHT
"""
import io
import statistics
import sys
import time

import numpy
import tifffile

name, width, height = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
frame = numpy.fromfile(name, dtype=numpy.uint16).reshape(height, width)
times = []
for _ in range(5):
    page = io.BytesIO()
    start = time.thread_time()
    tifffile.imwrite(page, frame, compression="zlib", compressionargs={"level": 1}, predictor=True, rowsperstrip=height)
    times.append(time.thread_time() - start)
print(frame.nbytes / 1e6 / statistics.median(times), len(page.getvalue()) / frame.nbytes)
