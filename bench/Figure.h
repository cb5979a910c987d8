// What the benchmark programs share: timing by medians, and the figures they report.
//
//     int main(int argc, char** argv) {
//         zel::bench::Report report(argc, argv);              // --dry-run, --json FILE
//         const auto [ours, theirs] = Medians(report.Repetitions(9), [&] { Ours(); }, [&] { Theirs(); });
//         report.Add({"area.ours_vs_theirs", theirs / ours, "x", AtLeast(2.0)});
//         return report.Finish();
//     }
//
// A figure is a ratio to something measured in the same run wherever it can be one: ratios carry over to other
// machines.
#ifndef BENCH_FIGURE_H
#define BENCH_FIGURE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace zel::bench {

struct Target {
    enum Kind { kNone, kAtLeast, kAtMost } kind = kNone;
    double value = 0;

    bool Met(double measured) const {
        return kind == kNone || (kind == kAtLeast ? measured >= value : measured <= value);
    }
    std::string Text() const {
        if (kind == kNone) return "";
        char text[40];
        std::snprintf(text, sizeof text, "%s %g", kind == kAtLeast ? ">=" : "<=", value);
        return text;
    }
};

inline Target AtLeast(double value) { return {Target::kAtLeast, value}; }
inline Target AtMost(double value) { return {Target::kAtMost, value}; }

struct Figure {
    std::string name;
    double value;
    std::string unit;
    Target target{};
};

// Keeps the compiler from leaving out what computes `value`.
template <class Value>
inline void Keep(const Value& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

// Processor time of the job, in the program and in the system for it. Time that other programs of the machine took does
// not count, and neither does waiting: a job that waits needs a clock of its own.
template <class Job>
double Seconds(Job&& job) {
    const std::clock_t start = std::clock();
    job();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// Runs the jobs in turn, once to warm up and then `repetitions` times, and answers each one's median time in seconds.
// Taking turns lets a slow phase of the machine fall on all of them.
template <class... Jobs>
std::array<double, sizeof...(Jobs)> Medians(int repetitions, Jobs&&... jobs) {
    std::array<std::vector<double>, sizeof...(Jobs)> times;
    for (int i = -1; i < repetitions; ++i) {
        std::size_t job = 0;
        ((i < 0 ? static_cast<void>(jobs()) : times[job].push_back(Seconds(jobs)), ++job), ...);
    }
    std::array<double, sizeof...(Jobs)> medians;
    for (std::size_t job = 0; job < medians.size(); ++job) {
        const auto middle = times[job].begin() + static_cast<std::ptrdiff_t>(times[job].size() / 2);
        std::nth_element(times[job].begin(), middle, times[job].end());
        medians[job] = *middle;
    }
    return medians;
}

// Collects the figures of one program and prints them: a line each, and as a JSON list into the file of --json.
class Report {
  public:
    Report(int argc, char** argv) : m_Arguments(argv + 1, argv + argc) {
        m_DryRun = std::find(m_Arguments.begin(), m_Arguments.end(), "--dry-run") != m_Arguments.end();
    }

    // Every case once, as small as can be: shows that the program works, not how fast.
    bool DryRun() const { return m_DryRun; }
    int Repetitions(int normal) const { return m_DryRun ? 1 : normal; }
    // The argument behind `name`, or `otherwise`.
    std::string Option(const char* name, const std::string& otherwise = "") const {
        const auto at = std::find(m_Arguments.begin(), m_Arguments.end(), name);
        return at == m_Arguments.end() || at + 1 == m_Arguments.end() ? otherwise : *(at + 1);
    }

    void Add(Figure figure) { m_Figures.push_back(std::move(figure)); }

    // The program's exit code: 1 when there is nothing to report or the JSON file can't be written.
    int Finish() const {
        for (const Figure& figure : m_Figures) {
            const char* verdict = m_DryRun || figure.target.kind == Target::kNone ? ""
                                  : figure.target.Met(figure.value)               ? "ok"
                                                                                  : "MISSED";
            std::printf("%-36s %12.4g %-10s %s%-8s %s\n", figure.name.c_str(), figure.value, figure.unit.c_str(),
                        figure.target.kind == Target::kNone ? "       " : "target ", figure.target.Text().c_str(),
                        verdict);
        }
        const std::string json = Option("--json");
        return m_Figures.empty() || (!json.empty() && !WriteJson(json)) ? 1 : 0;
    }

  private:
    // One object to a line, so that lists can be joined by lines.
    bool WriteJson(const std::string& name) const {
        std::FILE* const file = std::fopen(name.c_str(), "w");
        if (!file) return false;
        std::fputs("[\n", file);
        for (std::size_t i = 0; i < m_Figures.size(); ++i) {
            const Figure& figure = m_Figures[i];
            // A dry run measures nothing; a ratio of it may be no number.
            char value[40] = "null";
            if (std::isfinite(figure.value)) std::snprintf(value, sizeof value, "%.6g", figure.value);
            std::fprintf(file, "  {\"name\": \"%s\", \"value\": %s, \"unit\": \"%s\", \"target\": \"%s\"}%s\n",
                         figure.name.c_str(), value, figure.unit.c_str(), figure.target.Text().c_str(),
                         i + 1 < m_Figures.size() ? "," : "");
        }
        std::fputs("]\n", file);
        return std::fclose(file) == 0;
    }

    std::vector<std::string> m_Arguments;
    bool m_DryRun = false;
    std::vector<Figure> m_Figures;
};

}  // namespace zel::bench

#endif
