// What the benchmark programs share: timing, and the figures they report.
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
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "bench/Quantity.h"
#include "bench/Usage.h"

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

// What the machine itself allows, measured in the same run.
struct Limit {
    std::string name;  // empty: none was measured
    double value = 0;
};

struct Figure {
    std::string name;
    Quantity value;
    std::string unit;
    Target target{};
    Limit limit{};

    // A target that is further than the limit can't be met here, whatever is done.
    bool OutOfReach() const { return !limit.name.empty() && !target.Met(limit.value); }
};

// Keeps the compiler from leaving out what computes `value`.
template <class Value>
inline void Keep(const Value& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

// Time of the calling thread for the job (bench/Usage.h). Time that other programs of the machine took does not count,
// and neither does waiting: a job that waits needs a clock of its own.
template <class Job>
double Seconds(Job&& job) {
    const double start = ThreadSeconds();
    job();
    return ThreadSeconds() - start;
}

// Runs the jobs in turn, once to warm up and then `repetitions` times, and answers each one's time in seconds. Taking
// turns lets a slow phase of the machine fall on all of them. A job that answers a number has timed itself.
template <class... Jobs>
std::array<Quantity, sizeof...(Jobs)> Medians(int repetitions, Jobs&&... jobs) {
    const auto time = [](auto& job) {
        if constexpr (std::is_same_v<decltype(job()), double>) {
            return job();
        } else {
            return Seconds(job);
        }
    };
    std::array<std::vector<double>, sizeof...(Jobs)> times;
    for (int i = -1; i < repetitions; ++i) {
        std::size_t job = 0;
        ((i < 0 ? static_cast<void>(jobs()) : times[job].push_back(time(jobs)), ++job), ...);
    }
    std::array<Quantity, sizeof...(Jobs)> all;
    for (std::size_t job = 0; job < all.size(); ++job) all[job] = Quantity(std::move(times[job]));
    return all;
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
            const bool aims = figure.target.kind != Target::kNone;
            const char* const verdict = m_DryRun || !aims                          ? ""
                                        : figure.target.Met(figure.value.Median()) ? "ok"
                                        : figure.OutOfReach()                      ? "out of reach"
                                                                                   : "MISSED";
            std::printf("%-44s %10.4g", figure.name.c_str(), figure.value.Median());
            std::printf("%s %-10s %s%-8s %s", SpreadText(figure).c_str(), figure.unit.c_str(),
                        aims ? "target " : "       ", figure.target.Text().c_str(), verdict);
            if (!figure.limit.name.empty()) std::printf(" (%s: %.4g)", figure.limit.name.c_str(), figure.limit.value);
            std::puts("");
        }
        const std::string json = Option("--json");
        return m_Figures.empty() || (!json.empty() && !WriteJson(json)) ? 1 : 0;
    }

  private:
    // Four in five repetitions lie between these.
    static std::string SpreadText(const Figure& figure) {
        char text[40] = "";
        if (figure.value.HasSpread()) {
            std::snprintf(text, sizeof text, " %.3g..%.3g", figure.value.Quantile(0.1), figure.value.Quantile(0.9));
        }
        std::snprintf(text, sizeof text, "%-18s", std::string(text).c_str());
        return text;
    }
    // A dry run measures nothing; a ratio of it may be no number.
    static std::string Number(double value) {
        char text[40] = "null";
        if (std::isfinite(value)) std::snprintf(text, sizeof text, "%.6g", value);
        return text;
    }
    // One object to a line, so that lists can be joined by lines.
    bool WriteJson(const std::string& name) const {
        std::FILE* const file = std::fopen(name.c_str(), "w");
        if (!file) return false;
        std::fputs("[\n", file);
        for (std::size_t i = 0; i < m_Figures.size(); ++i) {
            const Figure& figure = m_Figures[i];
            std::fprintf(file, "  {\"name\": \"%s\", \"value\": %s, \"low\": %s, \"high\": %s, ", figure.name.c_str(),
                         Number(figure.value.Median()).c_str(), Number(figure.value.Quantile(0.1)).c_str(),
                         Number(figure.value.Quantile(0.9)).c_str());
            std::fprintf(file, "\"unit\": \"%s\", \"target\": \"%s\", ", figure.unit.c_str(),
                         figure.target.Text().c_str());
            std::fprintf(file, "\"limit\": %s, \"limit_name\": \"%s\"}%s\n",
                         figure.limit.name.empty() ? "null" : Number(figure.limit.value).c_str(),
                         figure.limit.name.c_str(), i + 1 < m_Figures.size() ? "," : "");
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
