#!/usr/bin/env python3
"""The speed goals of the command line, measured side by side in one run.

Each path runs five times (peers interleaved with ours, so both see the same
machine) and the table shows medians, peak resident memory and the goal.
Run through scripts/bench, which builds the release programs first.
"""
import json, os, statistics, subprocess, sys, tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BIN = ROOT / "build" / "bench" / "bin"
CLI = str(BIN / "kinfolio-cli")
CHAT_FOLDER = ROOT / "bench" / "data" / "whatsapp"
TELEGRAM_FOLDER = ROOT / "bench" / "data" / "telegram-account"
RUNS = 5


def timed(command, stdout=subprocess.DEVNULL, env=None):
    """Wall seconds and peak resident kilobytes of one run."""
    with tempfile.NamedTemporaryFile("r") as report:
        subprocess.run(["/usr/bin/time", "-q", "-f", "%e %M", "-o", report.name] + command,
                       stdout=stdout, stderr=subprocess.DEVNULL, check=True, env=env)
        seconds, kilobytes = report.read().split()[-2:]
    return float(seconds), int(kilobytes)


def node_parse_seconds():
    """whatsapp-chat-parser's own parse time of the chat (file already read)."""
    out = subprocess.run(["node", str(ROOT / "bench" / "whatsapp_node.js"),
                          str(CHAT_FOLDER / "_chat.txt"), "1"],
                         capture_output=True, text=True, check=True).stdout
    return float(out.split("parse 1: ")[1].split(" ms")[0]) / 1000


def prepare():
    if not (CHAT_FOLDER / "_chat.txt").exists():
        subprocess.run([str(BIN / "whatsapp_bench"), "generate", str(CHAT_FOLDER)], check=True)
    if not (TELEGRAM_FOLDER / "result.json").exists():
        # The benchmark writes its export on first use.
        subprocess.run([str(BIN / "telegram_bench")], check=True, stdout=subprocess.DEVNULL)
    if not (ROOT / "bench" / "node_modules" / "whatsapp-chat-parser").exists():
        subprocess.run(["npm", "ci", "--silent", "--prefix", str(ROOT / "bench")], check=True)


def main():
    prepare()
    chat_bytes = (CHAT_FOLDER / "_chat.txt").stat().st_size
    telegram_bytes = (TELEGRAM_FOLDER / "result.json").stat().st_size
    out_dir = Path(tempfile.mkdtemp(prefix="kinfolio-bench-"))
    settings = out_dir / "settings.json"
    settings.write_text("{}")
    env = dict(os.environ, XDG_CONFIG_HOME=str(out_dir / "config"),
               XDG_CACHE_HOME=str(out_dir / "cache"))
    common = ["--settings", str(settings), "--no-screenshot-text"]
    paths = {
        "scan": [CLI, "scan", str(CHAT_FOLDER)] + common,
        "scan --json": [CLI, "scan", str(CHAT_FOLDER), "--json"] + common,
        "select --json": [CLI, "select", str(CHAT_FOLDER), "--json"] + common,
        # 58 messages a month gives the document of about a thousand pages
        # that the goal was set on.
        "export": [CLI, "export", str(CHAT_FOLDER), "-o", str(out_dir / "out.pdf"),
                   "--set", "messagesPerMonth=58"] + common,
        "telegram": [CLI, "scan", str(TELEGRAM_FOLDER)] + common,
    }
    times = {name: [] for name in paths}
    peaks = {name: [] for name in paths}
    node = []
    for _ in range(RUNS):
        node.append(node_parse_seconds())
        for name, command in paths.items():
            seconds, kb = timed(command, env=env)
            times[name].append(seconds)
            peaks[name].append(kb * 1024)
    pages = subprocess.run(["pdfinfo", str(out_dir / "out.pdf")], capture_output=True,
                           text=True).stdout
    pages = next((l.split()[-1] for l in pages.splitlines() if l.startswith("Pages:")), "?")

    med = {name: statistics.median(v) for name, v in times.items()}
    peak = {name: max(v) for name, v in peaks.items()}
    node_med = statistics.median(node)
    ratio = node_med / med["scan"]
    rows = [
        ("kinfolio-cli scan (1,000,000 messages, %d MB)" % (chat_bytes // 1_000_000),
         "%.2f s, npm %.2f s: %.1f× faster; peak %.1f× the file" %
         (med["scan"], node_med, ratio, peak["scan"] / chat_bytes),
         "≥ 10×, peak ≤ 2.5×", ratio >= 10 and peak["scan"] <= 2.5 * chat_bytes),
        ("kinfolio-cli scan --json > /dev/null", "%.2f s" % med["scan --json"], "< 2 s",
         med["scan --json"] < 2),
        ("kinfolio-cli select --json", "%.2f s, peak %d MB" %
         (med["select --json"], peak["select --json"] // 1_000_000), "< 1 s",
         med["select --json"] < 1),
        ("kinfolio-cli export (%s pages)" % pages, "%.2f s" % med["export"], "< 2 s",
         med["export"] < 2),
        ("Telegram whole-account export, %d MB" % (telegram_bytes // 1_000_000),
         "%.2f s, peak %.1f× the file" % (med["telegram"], peak["telegram"] / telegram_bytes),
         "peak < 2×", peak["telegram"] < 2 * telegram_bytes),
    ]
    print(f"Medians of {RUNS} runs on {os.cpu_count()} cores, peers interleaved with ours.\n")
    print("| Path | Measured | Goal | Met |")
    print("|---|---|---|---|")
    for path, measured, goal, met in rows:
        print(f"| {path} | {measured} | {goal} | {'yes' if met else 'no'} |")
    print("\nAll runs (seconds):")
    print("  npm parse:", " ".join("%.2f" % t for t in node))
    for name, v in times.items():
        print(f"  {name}:", " ".join("%.2f" % t for t in v))
    return 0


if __name__ == "__main__":
    sys.exit(main())
