# SPDX-License-Identifier: Apache-2.0
"""What pages quote of a program has to be in it: quotations_test.py DIRECTORY PAGE...

A quotation is a block of code behind a comment with the name of the file: <!-- examples/c/evaluate.c -->"""

import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
found = 0
faults = []
for page in sys.argv[2:]:
    text = (root / page).read_text(encoding="utf-8")
    for name, code in re.findall(r"<!-- (\S+) -->\n```\w*\n(.*?)```", text, re.DOTALL):
        found += 1
        if code not in (root / name).read_text(encoding="utf-8"):
            faults.append(f"{page} quotes what {name} does not have:\n{code}")
if found == 0:
    faults.append("no quotations")
sys.exit("\n".join(faults) or 0)
