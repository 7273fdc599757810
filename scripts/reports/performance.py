"""Makes the tables and the picture of a benchmark run: performance.py RESULTS.json FOLDER

Renews the tables of docs/performance.md: what a call costs beside the bare formula, worst ratios first, and how the
cost grows with threads and peaks. Prints them and writes performance.md, performance.csv (every model) and
performance.png into the folder.
"""

import csv
import json
import math
import pathlib
import statistics
import subprocess
import sys

from markdown import renew, table

DOCUMENT = pathlib.Path(__file__).parents[2] / "docs/performance.md"
EMPTY_MODEL = "Prunty"  # a placeholder


def read_times(results):
    """Nanoseconds per call of every benchmark: the fastest of its repetitions, which other work disturbed least."""
    times = {}
    for run in results["benchmarks"]:
        if run["run_type"] == "iteration":
            times.setdefault(run["run_name"], []).append(1e9 / run["items_per_second"])
    return {name: min(values) for name, values in times.items()}


def geometric_mean(values):
    return math.exp(statistics.fmean(math.log(value) for value in values))


class Report:
    def __init__(self, results):
        context = results["context"]
        self.machine = f"{context['num_cpus']} cores at {context['mhz_per_cpu'] / 1000:.1f} GHz"
        self.times = read_times(results)
        self.models = sorted({name.split("/")[1] for name in self.times if name.startswith("model/")}, key=str.lower)

    def time(self, kind, model, what):
        return self.times.get(f"{kind}/{model}/{what}")

    def ratios(self, bare_loop, call):
        """Rows of name, bare loop, call and ratio, worst first."""
        bare = {model: self.time("bare", model, bare_loop) for model in self.models}
        rows = [[model, bare[model], self.time("model", model, call)] for model in self.models if bare[model]]
        return sorted(([*row, row[2] / row[1]] for row in rows), key=lambda row: -row[3])

    def ratio_table(self, bare_loop, call):
        rows = self.ratios(bare_loop, call)
        mean = ["geometric mean", "", "", geometric_mean(row[3] for row in rows)]
        return table(["model", "bare loop, ns", "call, ns", "ratio"], rows + [mean])

    def slowest_table(self):
        rows = [[model] + [self.time("model", model, what) for what in ("value", "derivatives", "both")]
                for model in self.models]
        rows.sort(key=lambda row: -row[3])
        median = ["median of all"] + [statistics.median(row[i] for row in rows) for i in (1, 2, 3)]
        return table(["model", "value, ns", "derivatives, ns", "both, ns"], rows[:10] + [median])

    def thread_table(self):
        names = sorted({name.split("/")[1] for name in self.times if name.startswith("threads/")})
        rows = []
        for name in names:
            one, two = (1e3 / self.times[f"threads/{name}/real_time/threads:{n}"] for n in (1, 2))
            rows.append([name, one, two, two / one])
        return table(["model", "1 thread, calls/µs", "2 threads, calls/µs", "gain"], rows)

    def peak_times(self):
        """For each model of peaks its times per call by number of peaks."""
        times = {}
        for name, time in self.times.items():
            if name.startswith("peaks/"):
                _, model, peaks = name.split("/")
                times.setdefault(model, {})[int(peaks)] = time
        return dict(sorted(times.items(), key=lambda item: item[1][1]))

    def peak_table(self):
        models = self.peak_times()
        counts = sorted(next(iter(models.values())))
        rows = [[model] + [time[n] / n for n in counts] for model, time in models.items()]
        return table(["model"] + [f"{n} peak{'s' if n > 1 else ''}" for n in counts], rows)

    def measurement_table(self):
        return table(["measured on", "a call that computes nothing, ns"],
                     [[self.machine, self.time("model", EMPTY_MODEL, "both")]])

    def tables(self):
        return {
            "measurement": self.measurement_table(),
            "derivative_call": self.ratio_table("derivatives", "derivatives"),
            "call_for_both": self.ratio_table("derivatives", "both"),
            "value_call": self.ratio_table("value", "value"),
            "slowest": self.slowest_table(),
            "threads": self.thread_table(),
            "peaks": self.peak_table(),
        }

    def write_csv(self, path):
        with open(path, "w", newline="") as file:
            out = csv.writer(file, lineterminator="\n")
            columns = [("model", "value"), ("model", "derivatives"), ("model", "both"), ("bare", "value"),
                       ("bare", "derivatives")]
            out.writerow(["model"] + [f"{what}_ns" if kind == "model" else f"bare_{what}_ns" for kind, what in columns])
            for model in self.models:
                times = [self.time(kind, model, what) for kind, what in columns]
                out.writerow([model] + ["" if time is None else f"{time:.2f}" for time in times])

    def write_picture(self, path):
        ratios = [f'"{row[0]}" {row[3]:.3f}' for row in self.ratios("derivatives", "derivatives")]
        both = sorted(self.time("model", model, "both") for model in self.models)
        peaks = self.peak_times()
        blocks = "\n\n\n".join("\n".join(f"{n} {time[n]:.3f}" for n in sorted(time)) for time in peaks.values())
        titles = ", ".join(f"$peaks index {i} using 1:2 with linespoints pt 7 ps 0.6 title '{model}'"
                           for i, model in enumerate(peaks))
        commands = f"""
set terminal pngcairo size 1500,560 font 'DejaVu Sans,10'
set output '{path}'
$ratios << EOD
{chr(10).join(ratios)}
EOD
$all << EOD
{chr(10).join(f'{i + 1} {time:.3f}' for i, time in enumerate(both))}
EOD
$peaks << EOD
{blocks}
EOD
set multiplot layout 1,3
set grid y
set key top left
set title 'Derivative call / bare loop'
set yrange [0:*]
set style fill solid 0.7
set boxwidth 0.7
set xtics rotate by 60 right font ',8' scale 0
unset key
plot $ratios using 0:2:xtic(1) with boxes lc rgb '#4878a8', 2 lc rgb '#c04040' dt 2
set title 'Value and derivatives, all models'
set xtics norotate autofreq font ',10' scale 1
set logscale y
set yrange [1:*]
set xrange [0:{len(both)}]
set xlabel 'models, fastest first'
set ylabel 'ns per call'
plot $all using 1:2 with lines lw 2 lc rgb '#4878a8'
set title 'Derivative call with several peaks'
set logscale xy
set xrange [1:*]
set xlabel 'peaks'
set key
plot {titles}
"""
        subprocess.run(["gnuplot"], input=commands, text=True, check=True)


def main():
    results, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    report = Report(json.loads(pathlib.Path(results).read_text()))
    folder.mkdir(parents=True, exist_ok=True)
    tables = report.tables()
    (folder / "performance.md").write_text(renew(DOCUMENT.read_text(), tables))
    report.write_csv(folder / "performance.csv")
    report.write_picture(folder / "performance.png")
    for name, text in tables.items():
        print(f"{name.replace('_', ' ').capitalize()}\n\n{text}\n")


if __name__ == "__main__":
    main()
