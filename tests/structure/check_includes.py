"""Checks what sources may include: the build keeps the project's own layers apart, but not the system's headers.

- toolkit and application include the C++ standard library and the project's headers, nothing else;
  toolkit/numerics may include cblas and lapack.
- Qt is included only in platform/windows and platform/drawing, FFmpeg only in platform/codecs.
- every header starts with #pragma once, and no two headers have one name.
"""

import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

root = Path(sys.argv[1])
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.M)
STANDARD = re.compile(r'^[a-z_]+$|^c(assert|ctype|errno|float|inttypes|limits|locale|math|setjmp|'
                      r'signal|stdarg|stddef|stdint|stdio|stdlib|string|time|wchar)$')
QT = re.compile(r'^Q[A-Z]|^Qt|^q[a-z]+\.h$')
FFMPEG = re.compile(r'^lib(av|sw)')

files = subprocess.run(['git', 'ls-files', '-co', '--exclude-standard', '*.h', '*.inc', '*.cpp'], cwd=root,
                       capture_output=True, text=True, check=True).stdout.split('\n')
files = [f for f in files if f and (root / f).exists()]
headers = defaultdict(list)
for f in files:
    if f.endswith(('.h', '.inc')):
        headers[Path(f).name].append(f)

faults = []
for name, places in headers.items():
    if len([p for p in places if not p.startswith('tests/')]) > 1:
        faults.append(f'{name} stands in several places: {", ".join(places)}')

for f in files:
    text = (root / f).read_text(encoding='utf-8')
    if f.endswith('.h') and '#pragma once' not in text:
        faults.append(f'{f}: no #pragma once')
    for include in INCLUDE.findall(text):
        own = include in headers
        if f.startswith(('toolkit/', 'application/')) and not own and not STANDARD.match(include):
            if not (f.startswith('toolkit/numerics/') and include in ('cblas.h', 'lapack.h')):
                faults.append(f'{f}: includes {include}')
        if QT.match(include) and not own and not f.startswith(
                ('platform/windows/', 'platform/drawing/', 'tests/', 'benchmarks/')):
            faults.append(f'{f}: includes {include}')
        if FFMPEG.match(include) and not f.startswith(('platform/codecs/', 'tests/', 'benchmarks/')):
            faults.append(f'{f}: includes {include}')

print('\n'.join(faults) if faults else f'{len(files)} files keep to the layers')
sys.exit(1 if faults else 0)
