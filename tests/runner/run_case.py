#!/usr/bin/env python3
"""run_case.py MODULE.CLASS.METHOD: runs one case; exit status 0 passed, 1 failed, 77 skipped."""

import sys
import unittest

result = unittest.TextTestRunner(verbosity=2).run(unittest.defaultTestLoader.loadTestsFromName(sys.argv[1]))
if not result.wasSuccessful() or result.testsRun != 1:
    sys.exit(1)
sys.exit(77 if result.skipped else 0)
