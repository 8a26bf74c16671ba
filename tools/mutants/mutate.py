#!/usr/bin/env python3
"""Puts deliberate one-line faults into the code, one at a time, runs the
test suite for each and reports the faults that no test noticed.

Run by hand before calling a piece of work done (it takes a while: one
incremental build and one suite run per fault), never in CI:

    python3 tools/mutants/mutate.py [--build build] [--only WORD] [faults.txt ...]

Each fault in a list file is a block of three lines, blocks separated by
blank lines, '#' lines are comments:

    file: src/model/Attribute.cpp
    find: return a + (b - a) / (t1 - t0) * (t - t0);
    replace: return a + (b - a) / (t1 - t0) * (t1 - t);

The text to find must occur exactly once in the file. The file is always
restored, also when the run is interrupted.
"""
import argparse
import os
import pathlib
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]


def read_faults(path):
    faults, block = [], {}
    for number, line in enumerate(path.read_text().splitlines() + [''], 1):
        if line.startswith('#'):
            continue
        if not line.strip():
            if block:
                missing = {'file', 'find', 'replace'} - block.keys()
                if missing:
                    sys.exit(f'{path}:{number}: a fault without {", ".join(sorted(missing))}')
                block['where'] = f'{path.name}:{block.pop("line")}'
                faults.append(block)
                block = {}
            continue
        key, _, value = line.partition(': ')
        if key not in ('file', 'find', 'replace'):
            sys.exit(f'{path}:{number}: expected "file: ", "find: " or "replace: "')
        block.setdefault('line', number)
        block[key] = value
    return faults


def run(command, log):
    with open(log, 'ab') as out:
        return subprocess.run(command, cwd=ROOT, stdout=out, stderr=subprocess.STDOUT).returncode


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('lists', nargs='*', type=pathlib.Path,
                        default=[pathlib.Path(__file__).with_name('faults.txt')])
    parser.add_argument('--build', default='build', help='an already configured build folder')
    parser.add_argument('--only', help='only faults whose file or text contains this word')
    args = parser.parse_args()

    faults = [f for path in args.lists for f in read_faults(path)]
    if args.only:
        faults = [f for f in faults if args.only in f['file'] or args.only in f['find']]
    build = ROOT / args.build
    log = ROOT / args.build / 'mutants.log'
    log.write_text('')
    # A fault is caught by its first failing test; the rest need not run.
    env_tests = ['ctest', '--test-dir', str(build), '-j', str(os.cpu_count() or 2), '--timeout', '120', '--stop-on-failure']
    os.environ['QT_QPA_PLATFORM'] = 'offscreen'

    survivors, broken = [], []
    for n, fault in enumerate(faults, 1):
        source = ROOT / fault['file']
        original = source.read_text()
        if original.count(fault['find']) != 1:
            broken.append((fault, f'the text occurs {original.count(fault["find"])} times'))
            print(f'[{n}/{len(faults)}] {fault["where"]}: cannot apply', flush=True)
            continue
        restore = lambda *_: source.write_text(original)
        signal.signal(signal.SIGINT, lambda *_: (restore(), sys.exit(130)))
        started = time.time()
        try:
            source.write_text(original.replace(fault['find'], fault['replace']))
            if run(['cmake', '--build', str(build)], log) != 0:
                verdict = 'caught (does not build)'
            elif run(env_tests, log) != 0:
                verdict = 'caught'
            else:
                verdict = 'SURVIVED'
                survivors.append(fault)
        finally:
            restore()
        print(f'[{n}/{len(faults)}] {fault["where"]} {fault["file"]}: {verdict} ({time.time() - started:.0f} s)', flush=True)

    run(['cmake', '--build', str(build)], log)  # leave the build as the code is
    print(f'\n{len(faults) - len(survivors) - len(broken)} of {len(faults)} faults caught.')
    for fault in survivors:
        print(f'survived: {fault["where"]} {fault["file"]}: "{fault["find"]}" -> "{fault["replace"]}"')
    for fault, why in broken:
        print(f'not applied: {fault["where"]} {fault["file"]}: {why}')
    return 1 if survivors or broken else 0


if __name__ == '__main__':
    sys.exit(main())
