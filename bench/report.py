"""Holds the measurements of a folder against their goals, as ratios.

    report.py FOLDER              prints every ratio beside its goal, fails when a goal's is missing
    report.py --unsettled FOLDER  prints a filter of the benchmarks that are to be run again, nothing
                                  when all ratios are settled

The folder has the measurements of each round, round-1.json and so on from varmex_bench and
round-1.txt with lines of a name and a value, and values.txt with what comes out the same each time.

Of a case counts the best repetition in each round, which other work on the machine disturbed least,
and of those that run on one thread the processor's time; some tell of their best iteration
themselves. A round is a process, and where its memory happens to lie makes it quicker or slower for
good; so a goal's ratio is formed in each round, where all of its cases run in the same minute, and
the median of the rounds is told. It is settled when the bounds within which the median lies with 95
in 100 chances stand close together: another run then comes to the same, which that of a best of all
rounds does not, as it falls with every round.
"""

import json
import math
import pathlib
import statistics
import sys

CLOSE = 0.1  # the bounds' distance, of the median
FEWEST_ROUNDS = 8
FEWEST_OF_SLOW = 3  # what takes seconds
MOST_OF_SLOW = 6
SLOW = ("command", "walk/all")
OTHERWISE = ("latency", "walk/python")  # timed in the first rounds, by programs of their own
NEVER = 1e15  # in ns: threads that were to run at once did not
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
PEERS = ("SimpleIni", "inih", "GLib", "Boost")
SIZES = (1, 16, 255)


class Goal:
    """A ratio that must stay below one bound and aims to stay below another; each may be None.
    `ours` and `against` are given a function from the name of a case to its time."""

    def __init__(self, title, ours, against, must=None, aim=None):
        self.title, self.ours, self.against, self.must, self.aim = title, ours, against, must, aim


def load_goals():
    for file in ("pxiesys", "pxisys"):
        for size in SIZES:
            at = f"load/{file}/{size}/"
            yield Goal(f"{file}.ini of {size}: ours to the fastest peer",
                       lambda t, at=at: t(at + "varmex"),
                       lambda t, at=at: min(t(at + peer) for peer in PEERS), 1 / 3, 1 / 6)
            yield Goal(f"{file}.ini of {size}: ours to finding the line ends",
                       lambda t, at=at: t(at + "varmex"), lambda t, at=at: t(at + "lineEnds"))


def look_up_goals():
    for size in SIZES:
        at = f"lookUp/pxiesys/{size}/"
        yield Goal(f"an item of {size}: ours to SimpleIni", lambda t, at=at: t(at + "varmex"),
                   lambda t, at=at: t(at + "SimpleIni"), 0.5)


def loads_apart(size):
    return lambda t: t(f"load/pxiesys/{size}/varmex") + t(f"load/pxisys/{size}/varmex")


def session_goals():
    bounds = {("first", 1): (1.5, 1.3), ("later", 1): (1.3, 1.15), ("later", 255): (2, 1.3)}
    for who, title in (("first", "the only session"), ("later", "a session beside another")):
        for size in SIZES:
            at = f"session/both/{size}/"
            yield Goal(f"{title}, {size}: to its system calls",
                       lambda t, name=at + who: t(name), lambda t, at=at: t(at + "floor"),
                       *bounds.get((who, size), ()))
    for size in SIZES:
        def opened(t, size=size):
            return t(f"session/both/{size}/open")
        yield Goal(f"the only session, {size}: opened to both files loaded", opened,
                   lambda t, size=size: t(f"session/both/{size}/loads"),
                   *((1.25, 1.1) if size == 255 else ()))
        yield Goal(f"the only session, {size}: opened to each file loaded by itself", opened,
                   loads_apart(size))


def refusal_goals():
    for kind in ("notApplicable", "wrongSlotType", "notConnected", "itemMissing"):
        for who, must, aim in (("record", 0.5, 0.2), ("null", 0.3, 0.05)):
            yield Goal(f"{kind}, {who}: to throwing an int",
                       lambda t, name=f"refusal/{kind}/1/{who}": t(name),
                       lambda t: t("refusal/throw/1/int"), must, aim)


def attribute_goals():
    for kind in ("slotText", "triggerRecord", "deviceNumber"):
        for size in (1, 255):
            at = f"attribute/{kind}/{size}/"
            yield Goal(f"{kind} of {size}: to a look-up of SimpleIni",
                       lambda t, at=at: t(at + "varmex"), lambda t, at=at: t(at + "SimpleIni"), 1)


def model_goals():
    for kind in ("slots", "devices"):
        def each(t, kind=kind):
            return [t(f"container/{kind}/{size}/varmex") for size in SIZES]
        yield Goal(f"an item of a list of {kind}: the slowest size to the fastest",
                   lambda t, each=each: max(each(t)), lambda t, each=each: min(each(t)), 1.5)
    yield Goal("a device by its address: 255 to 1", lambda t: t("byAddress/-/255/varmex"),
               lambda t: t("byAddress/-/1/varmex"), 2)
    yield Goal("everything that 255 answer: to before", lambda t: t("walk/all/255/varmex"),
               lambda t: t("walk/all/255/before"), 1 / 5, 1 / 10)
    for what in ("oneSession", "twoSessions", "devices"):
        yield Goal(f"two threads, {what}: time for the same work, to one",
                   lambda t, what=what: t(f"threads/{what}/2/varmex") / 2,
                   lambda t, what=what: t(f"threads/{what}/1/varmex"), 1 / 1.8)


def python_goals():
    def walk(who):
        return f"walk/python/255/{who}"
    yield Goal("everything that 255 answer, in Python: to C++ and the bare calls",
               lambda t: t(walk("varmex")), lambda t: t(walk("cpp")) + t(walk("ctypes")), 3)


def command_goals():
    for what, title, must, aim in (("showJson/255", "show --json of 255", 1 / 4, 1 / 8),
                                   ("hostile/1", "show of a hostile 2.7 MB", 1 / 8, 1 / 30)):
        yield Goal(f"{title}: to before", lambda t, what=what: t(f"command/{what}/varmex"),
                   lambda t, what=what: t(f"command/{what}/before"), must, aim)


def routing_goals():
    for count in (1, 8, 1024):
        at = f"calculate/-/{count}/"
        yield Goal(f"{count} routes: to the fastest peer", lambda t, at=at: t(at + "varmex"),
                   lambda t, at=at: min(t(at + peer)
                                        for peer in ("nlohmann", "RapidJSON", "simdjson")),
                   2 if count > 8 else 1)
    yield Goal("a route reserved: 1024 live ones to 1", lambda t: t("reserve/-/1024/varmex"),
               lambda t: t("reserve/-/1/varmex"))


def memory_goals():
    for size in SIZES:
        yield Goal(f"the peak of a load, {size}: to the file",
                   lambda t, size=size: t(f"peak/pxiesys/{size}/varmex"),
                   lambda t, size=size: t(f"size/pxiesys/{size}/file"), 3)
    yield Goal("100 sessions on 255 chassis: to one", lambda t: t("sessions/both/100/varmex"),
               lambda t: t("sessions/both/1/varmex"), 1.3, 1.1)
    yield Goal("one session on 255 chassis: to its files", lambda t: t("sessions/both/1/varmex"),
               lambda t: t("size/both/255/file"))
    yield Goal("blocks allocated in all look-ups of 255: to one",
               lambda t: t("allocations/lookUp/255/varmex"), lambda t: 1, 0)


def latency_goals():
    for what, title in (("tenth", "the quickest tenth"), ("median", "the median")):
        yield Goal(f"from a change to the wake-up, {title}: to the bare one",
                   lambda t, what=what: t(f"latency/{what}/1/varmex"),
                   lambda t, what=what: t(f"latency/{what}/1/bare"))


GROUPS = (("Loading a file", load_goals), ("Looking up", look_up_goals),
          ("Opening", session_goals), ("Refusing", refusal_goals),
          ("Answering", attribute_goals), ("The model", model_goals),
          ("Python", python_goals), ("The command", command_goals), ("Routing", routing_goals),
          ("Memory", memory_goals), ("Waiting", latency_goals))


class Samples:
    """The best time of each case in one round, with the values that are the same in all."""

    def __init__(self, folder, number=None):
        self.best = {}
        self.add_values(folder / "values.txt")
        if number is not None:
            self.add_values(folder / f"round-{number}.txt")
            self.add_round(folder / f"round-{number}.json")

    def add_values(self, path):
        for line in path.read_text(encoding="utf-8").splitlines() if path.exists() else ():
            name, value = line.split()
            self.best[name] = float(value)

    def add_round(self, path):
        for run in json.loads(path.read_text(encoding="utf-8"))["benchmarks"]:
            if run["run_type"] != "iteration":
                continue
            name = "/".join(run["run_name"].split("/")[:4])
            clock = "real_time" if "_time" in run["run_name"] else "cpu_time"
            time = run[clock] * NANOSECONDS[run["time_unit"]]
            if "best" in run:
                time = run["best"] * 1e9
                if time > NEVER:
                    continue
            self.best[name] = min(time, self.best.get(name, time))

    def ratio(self, goal):
        """None when a case is missing."""
        try:
            return goal.ours(self.best.__getitem__) / goal.against(self.best.__getitem__)
        except KeyError:
            return None


def cases(goal):
    """The names of the benchmarks that a goal takes its times from."""
    names = []

    def note(name):
        names.append(name)
        return 1.0
    goal.ours(note)
    goal.against(note)
    return names


def is_slow(goal):
    return any(name.startswith(SLOW) for name in cases(goal))


def is_timed_otherwise(goal):
    return all(name.startswith(OTHERWISE) for name in cases(goal))


class Ratio:
    """A goal's ratio: the median of the rounds, and how far apart the bounds are within which it
    lies, in its own size."""

    def __init__(self, goal, rounds, always):
        fixed = always.ratio(goal)
        each = [fixed] if fixed is not None else sorted(
            ratio for ratio in (one.ratio(goal) for one in rounds) if ratio is not None)
        self.median = statistics.median(each) if each else None
        self.apart = None
        if fixed is not None:
            self.apart = 0.0
        elif len(each) >= (FEWEST_OF_SLOW if is_slow(goal) else FEWEST_ROUNDS):
            # The median of as many coin tosses lies within these with 95 in 100 chances.
            beyond = max(0, math.floor(len(each) / 2 - 0.98 * math.sqrt(len(each))))
            self.apart = (each[-1 - beyond] - each[beyond]) / self.median

    def is_settled(self):
        return self.apart is not None and self.apart <= CLOSE


def outcome(ratio, bound):
    if ratio is None:
        return "not measured"
    return "kept" if ratio <= bound else "missed"


def verdict(ratio, bound, reached, missed):
    return "" if bound is None else f"{bound:.3g} {reached if ratio <= bound else missed}"


def printed(ratio):
    return f"{ratio:.3f}" if ratio >= 0.1 else f"{ratio:.3g}"


def report(ratio_of):
    goals_of = {"kept": 0, "missed": 0, "not measured": 0}
    print("\nRatios: smaller is better. `apart`: the bounds of the median of all rounds; with a star\n"
          "where they are so far apart that another run may tell another ratio.")
    for title, goals in GROUPS:
        print(f"\n{title:66} {'ratio':>8} {'apart':>6}  {'must':14} aim")
        for goal in goals():
            of_rounds = ratio_of(goal)
            ratio = of_rounds.median
            if goal.must is not None:
                goals_of[outcome(ratio, goal.must)] += 1
            if ratio is None:
                print(f"  {goal.title:64} {'-':>8}         not measured")
                continue
            apart = "-" if of_rounds.apart is None else f"{of_rounds.apart:.0%}"
            star = " " if of_rounds.is_settled() else "*"
            print(f"  {goal.title:64} {printed(ratio):>8} {apart:>6}{star} "
                  f"{verdict(ratio, goal.must, 'kept', 'MISSED'):14} "
                  f"{verdict(ratio, goal.aim, 'reached', 'not reached')}".rstrip())
    all_goals, unmeasured = sum(goals_of.values()), goals_of["not measured"]
    print(f"\nGoals kept: {goals_of['kept']} of {all_goals}"
          + (f", {unmeasured} not measured" if unmeasured else ""))
    return unmeasured == 0


def unsettled(rounds, ratio_of):
    """All in the first rounds, then what needs more."""
    if rounds < FEWEST_OF_SLOW:
        return "-^growth/"
    names = set()
    for _, goals in GROUPS:
        for goal in goals():
            if is_timed_otherwise(goal) or (is_slow(goal) and rounds >= MOST_OF_SLOW):
                continue
            if not ratio_of(goal).is_settled():
                names.update(cases(goal))
    return "|".join(f"^{name}(/|$)" for name in sorted(names))


def main():
    folder = pathlib.Path(sys.argv[-1])
    count = len(list(folder.glob("round-*.json")))
    rounds = [Samples(folder, number) for number in range(1, count + 1)]
    always = Samples(folder)

    def ratio_of(goal):
        return Ratio(goal, rounds, always)
    if sys.argv[1] == "--unsettled":
        print(unsettled(count, ratio_of))
    else:
        sys.exit(0 if report(ratio_of) else 1)


main()
