#!/usr/bin/env python3
"""Times the whole job beside plain copies and other programs, in one run on the same data.

usage: job_benchmark.py BATCH_DRIVER [WORK_FOLDER]

Each figure is the median of five runs taken in turn with its peer's, the page cache warm. The start of
the program (a job on an empty folder) is timed on its own and left out of the many-movies figure.
"""

import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import tiny_chunks

RUNS = 5


def timed(command):
    """Wall seconds, and peak resident memory in MiB, of one finished command."""
    start = time.perf_counter()
    process = subprocess.Popen([str(c) for c in command], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - start
    if status:
        raise RuntimeError(f'{command} ended with {status}')
    return seconds, usage.ru_maxrss / 1024


def compare(title, commands, clear, base=0.0):
    """Runs the commands in turn; prints the median of each and its ratio to the second one's."""
    seconds = {name: [] for name in commands}
    memory = {name: 0.0 for name in commands}
    for _ in range(RUNS):
        for name, command in commands.items():
            clear()
            wall, peak = timed(command)
            seconds[name].append(wall - (base if name == 'quillmere' else 0))
            memory[name] = max(memory[name], peak)
    medians = {name: statistics.median(found) for name, found in seconds.items()}
    reference = medians[list(commands)[1]]
    print(title)
    for name, median in medians.items():
        print(f'  {name:24} {median * 1000:9.1f} ms   {median / reference:6.2f} x   peak {memory[name]:6.1f} MiB')
    return medians, memory


def make(folder, *arguments):
    subprocess.run(['ffmpeg', '-v', 'error', '-nostdin', '-y', *map(str, arguments)], check=True, cwd=folder)


def main():
    driver = Path(sys.argv[1]).resolve()
    work = Path(tempfile.mkdtemp(prefix='quillmere-bench-', dir=sys.argv[2] if len(sys.argv) > 2 else None))
    try:
        run(driver, work)
    finally:
        shutil.rmtree(work, ignore_errors=True)


def run(driver, work):
    mask = work / 'mask.png'
    make(work, '-f', 'lavfi', '-i', 'color=red@0.5:s=320x120,format=rgba', '-frames:v', '1', mask)
    empty, big, many, target = work / 'empty', work / 'big', work / 'many', work / 'target'
    for folder in (empty, big, many, target):
        folder.mkdir()

    def clear():
        shutil.rmtree(target)
        target.mkdir()

    _, idle = timed([driver, mask, empty, target])
    start = statistics.median(timed([driver, mask, empty, target])[0] for _ in range(RUNS))
    print(f'start to the end of an empty job: {start * 1000:.1f} ms, peak {idle:.1f} MiB')

    # Raw video, three sound tracks of 44,100 PCM samples a second each, and a compressed one.
    movie = big / 'big.mov'
    make(work, '-f', 'lavfi', '-i', 'testsrc2=s=1280x720:r=25:d=22', '-f', 'lavfi', '-i', 'sine=d=22', '-map', '0', '-map', '1',
         '-map', '1', '-map', '1', '-map', '1', '-c:v', 'rawvideo', '-pix_fmt', 'uyvy422', '-c:a', 'pcm_s16be', '-c:a:3', 'aac', movie)
    size = movie.stat().st_size
    _, memory = compare(f'one movie of {size / 2**30:.2f} GiB', {
        'quillmere': [driver, mask, big, target],
        'cp': ['cp', movie, target / 'big-clean.mov'],
        'ffmpeg -c copy': ['ffmpeg', '-v', 'error', '-nostdin', '-y', '-i', movie, '-i', mask, '-map', '0', '-map', '1', '-c', 'copy',
                           target / 'big-clean.mov'],
    }, clear)
    print(f"  memory above the empty job's: {memory['quillmere'] - idle:.1f} MiB")
    movie.unlink()

    for order in ('taking turns', 'apart'):
        tiny_chunks.make(movie, 1153333, order == 'apart')
        _, memory = compare(f'3.46 million chunks of 200 bytes, tracks {order}', {
            'quillmere': [driver, mask, big, target],
            'cp': ['cp', movie, target / 'big-clean.mov'],
        }, clear)
        print(f"  memory above the empty job's: {memory['quillmere'] - idle:.1f} MiB")
        movie.unlink()

    make(work, '-f', 'lavfi', '-i', 'testsrc2=s=640x360:r=25:d=10', '-f', 'lavfi', '-i', 'sine=d=10', '-map', '0', '-map', '1',
         '-c:v', 'mjpeg', '-q:v', '5', '-c:a', 'pcm_s16be', many / 'movie000.mov')
    for i in range(1, 500):
        shutil.copy(many / 'movie000.mov', many / f'movie{i:03}.mov')
    each = (many / 'movie000.mov').stat().st_size / 1e6
    compare(f'500 movies of {each:.1f} MB, start left out', {
        'quillmere': [driver, mask, many, target],
        'cp -r': ['cp', '-r', many, target / 'copy'],
    }, clear, base=start)


if __name__ == '__main__':
    main()
