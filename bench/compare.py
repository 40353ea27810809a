"""Runs the programs of bench/ in turn and prints a table for each part: compare.py FOLDER [PART...]"""

import json
import os
import platform
import select
import signal
import statistics
import subprocess
import sys
import tempfile
import time

WIRE_MS = 20 * 57 * 10 / 115.2
"""Twenty exchanges of 50 bytes out and 7 back."""


def table(head, rows):
    print("| " + " | ".join(head) + " |")
    print("|---" + "|---:" * (len(head) - 1) + "|")
    for row in rows:
        print("| " + " | ".join(str(cell) for cell in row) + " |")
    print(flush=True)


def google(program, pattern, repetitions):
    """The medians of the benchmarks that match, by name; the benchmarks are run in random order."""
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "result.json")
        subprocess.run(
            [program, f"--benchmark_filter={pattern}", f"--benchmark_repetitions={repetitions}",
             "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.1", f"--benchmark_out={out}",
             "--benchmark_out_format=json"],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        with open(out, encoding="utf-8") as file:
            results = json.load(file)["benchmarks"]
    medians = {}
    for result in results:
        if result.get("error_occurred"):
            sys.exit(f"compare: {result['name']}: {result['error_message']}")
        if result.get("aggregate_name") == "median":
            medians[result["run_name"]] = result
    return medians


UNITS = {"ns": 1, "us": 1e3, "ms": 1e6}


def nanoseconds(result, kind):
    return result[kind] * UNITS[result["time_unit"]]


# ------------------------------------------------------------------------------------------------- round trip


def round_trip(folder):
    print("## Round trip: 50 bytes out, 7 back, over a pseudo-terminal\n")
    medians = google(f"{folder}/round-trip", ".", 11)
    by_name = {name.split("/")[0]: result for name, result in medians.items()}
    bare, peer = by_name["bare loop"], by_name["QtSerialPort"]
    table(["", "time, us", "of the bare loop's", "processor time, us", "of QtSerialPort's"],
          [[name, f"{nanoseconds(result, 'real_time') / 1e3:.1f}",
            f"{nanoseconds(result, 'real_time') / nanoseconds(bare, 'real_time'):.2f}",
            f"{nanoseconds(result, 'cpu_time') / 1e3:.1f}",
            f"{nanoseconds(result, 'cpu_time') / nanoseconds(peer, 'cpu_time'):.2f}"]
           for name, result in by_name.items()])


# ------------------------------------------------------------------------------------------- reading sequence

LINES = (
    # what it is called, the adapter's timer in ms, rule, low latency, runs a round
    ("wire alone", 0, 1, 1, 10),
    ("16 ms timer, with rule and low latency", 16, 1, 1, 10),
    ("16 ms timer, with rule", 16, 1, 0, 5),
    ("1 ms timer, with rule", 1, 1, 0, 10),
    ("16 ms timer, with neither", 16, 0, 0, 3),
    ("1 ms timer, with neither", 1, 0, 0, 1),
)


def sequence(folder, rounds):
    print("## The twenty registers over an emulated line\n")
    times = {line[0]: [] for line in LINES}
    restarted = {line[0]: 0 for line in LINES}
    for turn in range(rounds):
        for name, timer, rule, latency, runs in LINES:
            if not rule and turn >= 3:  # these may take ten seconds each, and one knows soon enough
                continue
            out = subprocess.run([f"{folder}/reading-sequence", str(timer), str(rule), str(latency), str(runs)],
                                 check=True, capture_output=True, text=True).stdout
            for line in out.splitlines():
                taken, commands = (int(number) for number in line.split())
                times[name].append(taken / 1e6 if taken >= 0 else float("inf"))
                restarted[name] += commands != 20
    rows = []
    for name, _, _, _, _ in LINES:
        median = statistics.median(times[name])
        never = sum(taken == float("inf") for taken in times[name])
        rows.append([name, f"{median:.1f}" if median < float("inf") else "over 10,000",
                     f"{median / WIRE_MS:.2f}" if median < float("inf") else "-",
                     len(times[name]), restarted[name], never])
    table(["", "median, ms", "of the wire's limit", "readings", "restarted", "not done in 10 s"], rows)


# ------------------------------------------------------------------------------------------------- whole programs


class Watched:
    """A program under the eye of the watch library, which tells when it has painted, sent and ended."""

    def __init__(self, command, folder, stay):
        reading, writing = os.pipe()
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", TAVRIL_WATCH=str(writing),
                           LD_PRELOAD=os.path.abspath(f"{folder}/libwatch.so"))
        if stay:
            environment["TAVRIL_STAY"] = "1"
        self.begin = time.monotonic_ns()
        self.process = subprocess.Popen(command, env=environment, pass_fds=[writing], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        os.close(writing)
        self.pipe = reading
        self.text = b""

    def wait_for(self, word, patience=60):
        """The time from exec to the event, in ms."""
        limit = time.monotonic() + patience
        while True:
            for line in self.text.decode().splitlines():
                if line.startswith(word + " "):
                    return (int(line.split()[1]) - self.begin) / 1e6
            if time.monotonic() > limit or not select.select([self.pipe], [], [], patience)[0]:
                sys.exit(f"compare: nothing was {word}")
            more = os.read(self.pipe, 4096)
            if not more:
                sys.exit(f"compare: the program ended before anything was {word}")
            self.text += more

    def resident_mb(self):
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("VmRSS")) / 1024

    def spent(self):
        """Processor time in ns, and how often a thread was woken, so far."""
        time_ns = wakes = 0
        tasks = f"/proc/{self.process.pid}/task"
        for task in os.listdir(tasks):
            with open(f"{tasks}/{task}/schedstat", encoding="ascii") as file:
                time_ns += int(file.read().split()[0])
            with open(f"{tasks}/{task}/status", encoding="ascii") as file:
                wakes += next(int(line.split()[1]) for line in file if line.startswith("voluntary_ctxt_switches"))
        return time_ns, wakes

    def end(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()
        os.close(self.pipe)


def programs(folder, picture):
    return {
        "empty window": ([f"{folder}/empty-window"], "painted"),
        "window with two texts": ([f"{folder}/text-window"], "painted"),
        "editor, not connected": ([f"{folder}/tavril"], "painted"),
        "editor, connected (--demo)": ([f"{folder}/tavril", "--demo", "--snapshot", picture], "ended"),
    }


def idle(folder, rounds):
    print("## Doing nothing, for 5 seconds at a time\n")
    load, wakes = {}, {}
    with tempfile.TemporaryDirectory() as scratch:
        for _ in range(rounds):
            ticking = {"empty window with a timer of 10 ms": ([f"{folder}/empty-window", "10"], "painted")}
            for name, (command, ready) in (ticking | programs(folder, f"{scratch}/picture.png")).items():
                watched = Watched(command, folder, stay=True)
                watched.wait_for(ready)
                time.sleep(2)
                begin = time.monotonic()
                before = watched.spent()
                time.sleep(5)
                after = watched.spent()
                seconds = time.monotonic() - begin
                watched.end()
                load.setdefault(name, []).append((after[0] - before[0]) / 1e7 / seconds)
                wakes.setdefault(name, []).append((after[1] - before[1]) / seconds)
    table(["", "processor, % of one core", "wake-ups a second"],
          [[name, f"{statistics.median(load[name]):.2f}", f"{statistics.median(wakes[name]):.0f}"] for name in load])
    print("The virtual servo's own thread is counted with the connected editor.\n")


def start(folder, rounds):
    print("## Start, and memory when the window has been painted\n")
    times, sent, memory = {}, [], {}
    with tempfile.TemporaryDirectory() as scratch:
        for turn in range(rounds + 1):
            for name, (command, _) in programs(folder, f"{scratch}/picture.png").items():
                watched = Watched(command, folder, stay=True)
                painted = watched.wait_for("painted")
                if turn > 0:  # what is read from the disk has been read by then
                    times.setdefault(name, []).append(painted)
                    memory.setdefault(name, []).append(watched.resident_mb())
                    if "connected (" in name:
                        sent.append(watched.wait_for("sent"))
                watched.end()
    empty, texts = (statistics.median(times[name]) for name in ("empty window", "window with two texts"))
    table(["", "painted after, ms", "of the empty window's", "of that with two texts", "resident, MB"],
          [[name, f"{statistics.median(times[name]):.0f}", f"{statistics.median(times[name]) / empty:.2f}",
            f"{statistics.median(times[name]) / texts:.2f}",
            f"{statistics.median(memory[name]):.0f}"] for name in times])
    print(f"First command sent under --demo after {statistics.median(sent):.0f} ms.\n")


# -------------------------------------------------------------------------------------------- parts and growth


def parts(folder):
    print("## Single parts\n")
    medians = google(f"{folder}/parts", "decode|take|build|layout|idle", 11)
    table(["", "processor time, us", "a second", "allocations"],
          [[name, f"{nanoseconds(result, 'cpu_time') / 1e3:.2f}",
            f"{1e9 / nanoseconds(result, 'cpu_time'):,.0f}", f"{result['allocs']:.0f}"]
           for name, result in medians.items()])


def growth(folder):
    print("## Growth\n")
    medians = google(f"{folder}/parts", "parse|Ports", 7)
    rows = []
    for name, result in medians.items():
        what, number = name.split("/")[:2]
        kind = "real_time" if "real_time" in name else "cpu_time"
        rows.append([what, f"{int(number):,}", f"{nanoseconds(result, kind) / 1e3:,.1f}",
                     f"{nanoseconds(result, kind) / 1e3 / int(number):.2f}"])
    table(["", "number", "time, us", "for each, us"], rows)
    print("Lines of the strings converter: bench/converter\n")


def main():
    folder, wanted = sys.argv[1], sys.argv[2:]
    runs = {
        "round-trip": lambda: round_trip(folder),
        "sequence": lambda: sequence(folder, 100),
        "idle": lambda: idle(folder, 3),
        "start": lambda: start(folder, 11),
        "parts": lambda: parts(folder),
        "growth": lambda: growth(folder),
    }
    unknown = [part for part in wanted if part not in runs]
    if unknown:
        sys.exit(f"compare: there is no part {unknown[0]}; there are: {' '.join(runs)}")
    print(f"{platform.system()} on {platform.machine()}, {os.cpu_count()} CPUs, load {os.getloadavg()[0]:.1f}\n")
    for part in wanted or runs:
        runs[part]()


if __name__ == "__main__":
    main()
