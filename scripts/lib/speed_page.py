#!/usr/bin/env python3
"""Prints docs/speed.md: tables of what bench_conversions measured, from its JSON file."""
import json
import os
import platform
import subprocess
import sys

OWN = "this"
HEAD = """# Speed

Made by `scripts/bench --write`. One thread; the library's own checks of buffers included. Photo is smooth gradients with
some noise, random is noise. The share is that of the speed of `memcpy` moving half of both frames' bytes, measured in the
same run; the factor is how many times as fast as the fastest of the other libraries the conversion is.
"""


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def machine():
    cpu = dict(line.split(":", 1) for line in output_of("lscpu").splitlines() if ":" in line)
    caches = ", ".join(f"{name} {' '.join(cpu[name].split()[:2])}" for name in ("L1d cache", "L2 cache", "L3 cache") if name in cpu)
    vectors = [flag for flag in ("avx2", "avx512bw", "avx512vbmi", "avx512_vnni") if flag in cpu.get("Flags", "").split()]
    packages = output_of("dpkg-query", "-W", "-f", "${Package} ${Version}, ", "g++-12", "libopencv-core406", "libyuv0",
                         "libswscale6", "liblcms2-2", "libbabl-0.1-0").strip(", ")
    return (f"{cpu.get('Model name', '?').strip()}, {os.cpu_count()} threads, {caches}; {' '.join(vectors)}; "
            f"{platform.system()} {platform.release()}. {packages}.")


def read(file):
    """{group: {(pair, size, content): {who: benchmark}}}, in the order of the run."""
    groups = {}
    for run in json.load(file)["benchmarks"]:
        group, pair, size, content, who = run["name"].split("/")[:5]
        if run.get("error_occurred"):
            print(f"{run['name']}: {run.get('error_message')}", file=sys.stderr)
            continue
        groups.setdefault(group, {}).setdefault((pair, size, content), {})[who] = run
    return groups


def table(*titles):
    print("\n| " + " | ".join(titles) + " |")
    print("|---" * 2 + "|---:" * (len(titles) - 2) + "|")


def row(*cells):
    print("| " + " | ".join(cells) + " |")


def factor(slower, faster):
    times = slower["ns"] / faster["ns"]
    return f"{times:.0f}" if times >= 20 else f"{times:.2g}"


def against_peers(runs, own):
    peers = [who for who in runs if who != OWN]
    if not peers:
        return "", ""
    best = min(peers, key=lambda who: runs[who]["ns"])
    return best, factor(runs[best], own)


def print_frames(title, cases):
    print(f"\n## By {title}")
    table("pair", "size", "content", "Mpixel/s", "of memcpy", "best peer", "factor")
    for (pair, size, content), runs in cases.items():
        if size == "16x1" or OWN not in runs:
            continue
        own = runs[OWN]
        row(pair, size, content, f"{own['Mpixel/s']:.0f}", f"{own['of_memcpy']:.3f}", *against_peers(runs, own))


def print_calls(groups):
    print("\n## A call for 16 pixels")
    table("pair", "by", "ns", "best peer", "factor")
    for group in ("formulas", "ICC", "tables"):
        for (pair, size, _), runs in groups.get(group, {}).items():
            if size == "16x1" and OWN in runs:
                row(pair, group, f"{runs[OWN]['ns']:.0f}", *against_peers(runs, runs[OWN]))


def print_threads(cases):
    print("\n## Two threads\n\nWhat two threads, each with a converter of its own, do of what one does.")
    table("work", "threads", "of one")
    for (work, _, _), runs in cases.items():
        row(work, "2", f"{runs[OWN]['of_one']:.2f}")


def print_targets(cases):
    targets = list(dict.fromkeys(who for runs in cases.values() for who in runs))
    print("\n## Instruction sets\n\nAt 256x64: million pixels a second of each kernel's scalar form, compiled without "
          "vectors of any kind, and how\nmany times as fast it is with each instruction set.")
    table("kernel", *targets)
    for (kernel, _, _), runs in cases.items():
        scalar = runs[targets[0]]
        row(kernel, f"{scalar['Mpixel/s']:.0f}",
            *(factor(scalar, runs[who]) if who in runs else "" for who in targets[1:]))


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        groups = read(file)
    print(HEAD)
    print(machine())
    for group in ("formulas", "ICC", "tables"):
        print_frames(group, groups.get(group, {}))
    print_calls(groups)
    print_threads(groups.get("threads", {}))
    print_targets(groups.get("targets", {}))


if __name__ == "__main__":
    main()
