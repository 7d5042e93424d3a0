"""Prints the ratios of a run of varmex_bench, given its JSON output, beside their goals."""

import json
import sys

LOAD_GOAL, LOAD_AIM = 3.0, 6.0
LOOK_UP_GOAL = 0.5
SESSION_GOAL, SESSION_AIM = 3.0, 1.5
DEVICE_MAP_GOAL = 1.5
PEERS = ("SimpleIni", "inih", "GLib", "Boost")
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read_times(path):
    """The best repetition, which other work on the machine disturbed least:
    (what, file, chassis, who) to (nanoseconds, bytes/second)."""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    best = {}
    for run in runs:
        if run["run_type"] == "iteration":
            what, description, chassis, who = run["run_name"].split("/")[:4]
            key = what, description, int(chassis), who
            sample = run["real_time"] * NANOSECONDS[run["time_unit"]], run.get("bytes_per_second")
            best[key] = min(sample, best.get(key, sample))
    return best


def read_rates(path):
    """The best repetition's items/second, of the benchmarks that count items."""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    best = {}
    for run in runs:
        if run["run_type"] == "iteration" and "items_per_second" in run:
            what, description, chassis, who = run["run_name"].split("/")[:4]
            key = what, description, int(chassis), who
            best[key] = max(run["items_per_second"], best.get(key, 0))
    return best


def sizes(times, what, description):
    return sorted({key[2] for key in times if key[:2] == (what, description)})


def verdict(reached):
    return "reached" if reached else "MISSED"


def report_loads(times):
    print(f"\nLoad of a description file, MB/s. Ours to the fastest peer: goal {LOAD_GOAL}, "
          f"aim {LOAD_AIM}.\nTo own: ours to our speed at the smallest size, not below 1.")
    columns = ("varmex",) + PEERS + ("lineEnds",)
    heads = " ".join(f"{name:>9}" for name in columns)
    print(f"{'file':8} {'chassis':>7} {heads}   ratio to own")
    for description in ("pxiesys", "pxisys"):
        smallest = None
        for chassis in sizes(times, "load", description):
            speed = {who: times["load", description, chassis, who][1] / 1e6 for who in columns}
            smallest = smallest or speed["varmex"]
            ratio = speed["varmex"] / max(speed[peer] for peer in PEERS)
            cells = " ".join(f"{speed[who]:9.1f}" for who in columns)
            print(f"{description:8} {chassis:7} {cells} {ratio:7.2f} "
                  f"{speed['varmex'] / smallest:6.2f}  "
                  f"goal {verdict(ratio >= LOAD_GOAL)}, aim {verdict(ratio >= LOAD_AIM)}")


def report_look_ups(times):
    print(f"\nLook-up of an item of pxiesys.ini, ns; ours to SimpleIni's: goal {LOOK_UP_GOAL}")
    for chassis in sizes(times, "lookUp", "pxiesys"):
        ours = times["lookUp", "pxiesys", chassis, "varmex"][0]
        theirs = times["lookUp", "pxiesys", chassis, "SimpleIni"][0]
        print(f"chassis {chassis:3}  varmex {ours:7.1f}  SimpleIni {theirs:7.1f}  "
              f"ratio {ours / theirs:5.2f}  {verdict(ours / theirs <= LOOK_UP_GOAL)}")


def report_sessions(times):
    print("\nSession opened and closed, us, to the bare system calls: at 1 chassis goal "
          f"{SESSION_GOAL}, aim {SESSION_AIM}.\nSession opened to both files loaded: at 255 "
          f"chassis goal {DEVICE_MAP_GOAL}.")
    for chassis in sizes(times, "session", "both"):
        session, opened, floor = (times["session", "both", chassis, who][0] / 1e3
                                  for who in ("varmex", "open", "floor"))
        loads = sum(times["load", file, chassis, "varmex"][0] / 1e3
                    for file in ("pxiesys", "pxisys"))
        print(f"chassis {chassis:3}  session {session:8.1f}  floor {floor:6.1f}  "
              f"ratio {session / floor:5.2f}  opened {opened:8.1f}  loads {loads:8.1f}  "
              f"ratio {opened / loads:5.2f}"
              + session_verdict(chassis, session / floor, opened / loads))


def session_verdict(chassis, to_floor, to_loads):
    if chassis == 1:
        return (f"  goal {verdict(to_floor <= SESSION_GOAL)}, "
                f"aim {verdict(to_floor <= SESSION_AIM)}")
    return f"  goal {verdict(to_loads <= DEVICE_MAP_GOAL)}" if chassis == 255 else ""


def report_attributes(times):
    print("\nAttributes on an open item, ns; ours to one SimpleIni look-up: goal 1.0")
    for what, description, chassis, who in sorted(times):
        if what == "attribute" and who == "varmex":
            ours = times[what, description, chassis, who][0]
            theirs = times[what, description, chassis, "SimpleIni"][0]
            print(f"chassis {chassis:3}  {description:14} varmex {ours:7.1f}  SimpleIni "
                  f"{theirs:7.1f}  ratio {ours / theirs:5.2f}  {verdict(ours <= theirs)}")


def report_containers(times, rates):
    print("\nContainers made and destroyed, ns an item; the slowest size to the fastest: goal 1.5")
    for kind in ("slots", "devices"):
        each = {chassis: 1e9 / rates["container", kind, chassis, "varmex"]
                for chassis in sizes(times, "container", kind)}
        ratio = max(each.values()) / min(each.values())
        cells = "  ".join(f"{chassis} chassis {time:7.1f}" for chassis, time in each.items())
        print(f"{kind:8} {cells}  ratio {ratio:5.2f}  {verdict(ratio <= 1.5)}")
    one, many = (times["byAddress", "-", chassis, "varmex"][0] for chassis in (1, 255))
    print(f"Device by address, ns: 1 chassis {one:.1f}, 255 chassis {many:.1f}, "
          f"ratio {many / one:.2f}  {verdict(many <= 2 * one)} (goal 2)")


def report_threads(rates):
    print("\nTwo threads to one, work done in the same time: goal 1.8")
    for what in ("oneSession", "twoSessions", "devices"):
        one, two = (rates["threads", what, count, "varmex"] for count in (1, 2))
        print(f"{what:12} ratio {two / one:5.2f}  {verdict(two >= 1.8 * one)}")


def report_routing(times):
    print("\ncalculateRoute, us; ours to the fastest peer: goal below 1 for 1 and 8, 2 for 1024")
    for count in sizes(times, "calculate", "-"):
        cost = {who: times["calculate", "-", count, who][0] / 1e3
                for who in ("varmex", "nlohmann", "RapidJSON", "simdjson")}
        ratio = cost["varmex"] / min(cost[who] for who in cost if who != "varmex")
        cells = "  ".join(f"{who} {time:.2f}" for who, time in cost.items())
        print(f"{count:5}  {cells}  ratio {ratio:5.2f}  {verdict(ratio <= (2 if count > 8 else 1))}")
    costs = "  ".join(f"{live} live {times['reserve', '-', live, 'varmex'][0]:.0f} ns"
                      for live in sizes(times, "reserve", "-"))
    print(f"reserve and unreserve: {costs}")


def main():
    times = read_times(sys.argv[1])
    report_loads(times)
    report_look_ups(times)
    report_sessions(times)
    rates = read_rates(sys.argv[1])
    report_attributes(times)
    report_containers(times, rates)
    report_threads(rates)
    report_routing(times)


main()
