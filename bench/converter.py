"""Runs the converter and paste in turn on the same two files, for each of several sizes, and prints medians."""

import os
import platform
import statistics
import subprocess
import sys
import tempfile

SIZES = (1_000, 10_000, 100_000, 1_000_000)


def write_lines(path, lines):
    with open(path, "wb") as file:
        file.write(b"\n".join(lines) + b"\n")


def timed(command, out):
    """Runs the command with its output in a file; returns its processor time in nanoseconds."""
    with open(out, "wb") as file:
        process = subprocess.Popen(command, stdout=file)
        _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"bench: {command[0]} failed")
    return (usage.ru_utime + usage.ru_stime) * 1e9


def check(table, pasted, keys, values):
    """Both have to have done their work."""
    with open(table, "rb") as file:
        expected = b"".join(b'"%s"="%s";\n' % pair for pair in zip(keys + [b""], values + [b""]))
        if file.read() != expected:
            sys.exit("bench: the converter's table is wrong")
    with open(pasted, "rb") as file:
        if file.read() != b"".join(b"%s=%s\n" % pair for pair in zip(keys, values)):
            sys.exit("bench: paste's output is wrong")


def measure(program, folder, size, rounds):
    keys = [b"key_%07d" % number for number in range(size)]
    values = [b"Value %07d" % number for number in range(size)]
    names = {name: os.path.join(folder, name) for name in ("keys.txt", "values.txt", "table.h", "pasted", "times")}
    write_lines(names["keys.txt"], keys)
    write_lines(names["values.txt"], values)
    paste, whole, inside, pairing = [], [], [], []
    for turn in range(rounds + 1):
        paste_time = timed(["paste", "-d=", names["keys.txt"], names["values.txt"]], names["pasted"])
        whole_time = timed([program, names["keys.txt"], names["values.txt"], names["table.h"]], names["times"])
        if turn == 0:  # files and programs are in memory from here on
            check(names["table.h"], names["pasted"], keys, values)
            continue
        with open(names["times"], encoding="ascii") as file:
            times = [int(number) for number in file.read().split()]
        paste.append(paste_time)
        whole.append(whole_time)
        pairing.append(times[0])
        inside.append(times[1])
    return [statistics.median(series) for series in (paste, whole, inside, pairing)]


def main():
    program, rounds = sys.argv[1], int(sys.argv[2])
    print(f"{platform.system()} on {platform.machine()}, {os.cpu_count()} CPUs, "
          f"medians of {rounds} rounds in turn, processor time in milliseconds\n")
    print("| Lines | `paste` | Converter, whole process | of that, reading to writing | of that, pairing "
          "| Pairing, ns per line |")
    print("|---:|---:|---:|---:|---:|---:|")
    with tempfile.TemporaryDirectory() as folder:
        for size in SIZES:
            medians = measure(program, folder, size, rounds)
            cells = [f"{nanoseconds / 1e6:.2f}" for nanoseconds in medians]
            print(f"| {size:,} | {' | '.join(cells)} | {medians[3] / size:.0f} |", flush=True)


if __name__ == "__main__":
    main()
