#!/usr/bin/env python3
"""Prints how many tests passed, failed and were skipped in a ctest report."""
import sys
import xml.etree.ElementTree as tree

suite = tree.parse(sys.argv[1]).getroot()
total = int(suite.get("tests", 0))
failed = int(suite.get("failures", 0))
skipped = int(suite.get("skipped", 0)) + int(suite.get("disabled", 0))
print(total - failed - skipped, failed, skipped)
