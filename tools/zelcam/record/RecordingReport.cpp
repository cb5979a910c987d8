#include "tools/zelcam/record/RecordingReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "platform/UserTexts.h"
#include "record/RecordingGaps.h"
#include "record/RecordingReader.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

constexpr std::size_t kGapsShown = 20;
constexpr const char* kFilters[] = {"monochrome", "color, red first", "color, blue first",
                                    "color, green with red beside it first", "color, green with blue beside it first"};

double Seconds(std::int64_t host_ns) { return static_cast<double>(host_ns) / 1e9; }

void FindGaps(const zel::record::RecordingReader& reader, RecordingReport& report) {
    std::vector<std::uint32_t> numbers;
    for (std::size_t i = 0; i < reader.Frames(); ++i) numbers.push_back(reader.Frame(i).number);
    // One that was cut off does not tell whether frames were left out on purpose.
    const auto found = zel::record::FindGaps(numbers, !report.end || report.end->passed_over > 0);
    report.step = found.step;
    for (const zel::record::NumberGap& gap : found.gaps) {
        report.gaps.push_back({numbers[gap.index - 1], gap.missing, Seconds(reader.Frame(gap.index).host_ns)});
    }
}

void FindRates(const zel::record::RecordingReader& reader, RecordingReport& report) {
    const zel::record::FrameFacts first = reader.Frame(0);
    const zel::record::FrameFacts last = reader.Frame(reader.Frames() - 1);
    const auto steps = static_cast<double>(reader.Frames() - 1);
    report.first_seconds = Seconds(first.host_ns);
    report.seconds = std::max(Seconds(last.host_ns) - Seconds(first.host_ns), 0.0);
    if (report.seconds > 0.0) report.host_rate = steps / report.seconds;
    std::uint64_t milliseconds = 0;  // their clock turns over
    for (std::size_t i = 1; i < reader.Frames(); ++i) {
        milliseconds += static_cast<std::uint32_t>(reader.Frame(i).arrival_ms - reader.Frame(i - 1).arrival_ms);
    }
    if (milliseconds > 0) report.camera_rate = steps * 1000.0 / static_cast<double>(milliseconds);
}

// Nothing from a file moves a terminal's cursor.
std::string Printable(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, '?');
    return text;
}

std::string RecordedRateText(double rate) { return rate > 0.0 ? fmt::format("{:.2f}", rate) : "-"; }

std::string LostText(const zel::record::RecordingEnd& end) {
    return fmt::format("{} on the link, {} without a free buffer, {} the disk was too slow for", end.lost_link,
                       end.lost_buffer, end.lost_disk);
}

std::string StateText(const RecordingReport& report) {
    if (!report.cut_off.empty()) return "cut off: " + report.cut_off;
    if (!report.recording) return "made by another program";
    if (!report.end) return "cut off: it was not ended";
    if (!report.Complete()) return fmt::format("cut off: it says that it has {}", Counted(report.end->frames, "frame"));
    return "complete, ended by: " + Printable(report.end->reason);
}

std::string GapText(const RecordingGap& gap) {
    return fmt::format("{} missing after number {}", Counted(gap.missing, "frame"), gap.after);
}

using TableRows = std::vector<std::vector<std::string>>;

void AddCamera(const RecordingReport& report, TableRows& rows) {
    const zel::record::RecordingFacts& facts = report.facts;
    rows.push_back({"camera", fmt::format("{}, serial {}, model {}, {}", Printable(facts.camera),
                                          Printable(facts.serial), Printable(facts.model), Printable(facts.link))});
    rows.push_back({"region", fmt::format("from {},{}; binned {} x {}", facts.x_origin, facts.y_origin, facts.x_bin,
                                          facts.y_bin)});
    if (facts.averaged > 0) rows.push_back({"averaged", Counted(static_cast<unsigned>(facts.averaged), "frame")});
    rows.push_back({"taps", facts.corrected ? "corrected" : "not corrected"});
    if (facts.pixel_um > 0.0) rows.push_back({"pixel", fmt::format("{:g} um", facts.pixel_um)});
    rows.push_back({"started", Printable(facts.started)});
    rows.push_back({"duration", fmt::format("{:.3f} s", report.seconds)});
    rows.push_back(
        {"rate", fmt::format("{} frames/s by the host's clock, {} by the frames' own; the camera was set to {}",
                             RecordedRateText(report.host_rate), RecordedRateText(report.camera_rate),
                             RecordedRateText(facts.frames_per_second))});
    if (report.step > 1) rows.push_back({"kept", fmt::format("one frame of {}", report.step)});
    rows.push_back({"lost", report.end ? LostText(*report.end) : "not known; see the gaps"});
    rows.push_back({"software", Printable(facts.software)});
}

}  // namespace

std::uint64_t RecordingReport::Missing() const {
    std::uint64_t missing = 0;
    for (const RecordingGap& gap : gaps) missing += gap.missing;
    return missing;
}

RecordingReport LookAtRecording(const std::string& file) {
    try {
        const zel::record::RecordingReader reader(zel::platform::Utf8Path(file));
        RecordingReport report;
        report.file = file;
        report.recording = reader.IsRecording();
        report.facts = reader.Facts();
        report.end = reader.End();
        report.cut_off = reader.CutOff();
        report.frames = reader.Frames();
        if (report.recording) {
            FindRates(reader, report);
            FindGaps(reader, report);
        }
        return report;
    } catch (const zel::record::RecordError& error) {
        throw Failure("'" + file + "' can't be read", error.what(), "choose a recording or a TIFF stack");
    }
}

Json ToJson(const RecordingReport& report) {
    const zel::record::RecordingFacts& facts = report.facts;
    const auto known = [](double value) { return value > 0.0 ? Json(value) : Json(); };
    Json json{{"file", report.file},           {"recording", report.recording},
              {"complete", report.Complete()}, {"cut_off", report.cut_off.empty() ? Json() : Json(report.cut_off)},
              {"frames", report.frames},       {"width", facts.width},
              {"height", facts.height},        {"bits", facts.bits},
              {"cfa_phase", facts.cfa_phase}};
    if (!report.recording) return json;
    json["camera"] = {{"name", facts.camera},
                      {"serial", facts.serial},
                      {"model", facts.model},
                      {"firmware", facts.firmware},
                      {"interface", facts.link}};
    json["region"] = {{"x", facts.x_origin}, {"y", facts.y_origin}, {"xbin", facts.x_bin}, {"ybin", facts.y_bin}};
    json["average_of_frames"] = std::max(facts.averaged, 1);
    json["corrected"] = facts.corrected;
    json["pixel_um"] = known(facts.pixel_um);
    json["software"] = facts.software;
    json["session"] = facts.session;
    json["started_utc"] = facts.started;
    json["first_frame_s"] = report.first_seconds;
    json["duration_s"] = report.seconds;
    json["frames_per_second"] = {{"host", known(report.host_rate)},
                                 {"frames", known(report.camera_rate)},
                                 {"set", known(facts.frames_per_second)}};
    json["number_step"] = report.step;
    json["missing"] = report.Missing();
    json["gaps"] = Json::array();
    for (const RecordingGap& gap : report.gaps) {
        json["gaps"].push_back({{"after", gap.after}, {"missing", gap.missing}, {"at_s", gap.seconds}});
    }
    json["end"] = Json();
    if (const auto& end = report.end) {
        json["end"] = {
            {"reason", end->reason},
            {"frames", end->frames},
            {"lost", {{"link", end->lost_link}, {"no_free_buffer", end->lost_buffer}, {"disk", end->lost_disk}}},
            {"passed_over", end->passed_over}};
    }
    return json;
}

std::string ToText(const RecordingReport& report) {
    const zel::record::RecordingFacts& facts = report.facts;
    TableRows rows{{"file", report.file},
                   {"frames", fmt::format("{}, {}", report.frames, StateText(report))},
                   {"size", fmt::format("{} x {}, {} bits, {}", facts.width, facts.height, facts.bits,
                                        kFilters[facts.cfa_phase])}};
    if (report.recording) AddCamera(report, rows);
    if (report.recording && report.gaps.empty()) rows.push_back({"gaps", "none"});
    for (std::size_t i = 0; i < report.gaps.size(); ++i) {
        const std::string label = i == 0 ? "gaps" : "";
        if (i == kGapsShown) {
            rows.push_back({label, fmt::format("and {} more; --json has them all", report.gaps.size() - kGapsShown)});
            break;
        }
        rows.push_back({label, fmt::format("{}, at {:.3f} s", GapText(report.gaps[i]), report.gaps[i].seconds)});
    }
    return FormatTable(rows);
}

bool OneSession(const std::vector<RecordingReport>& reports) {
    return std::ranges::all_of(reports, [&](const RecordingReport& report) {
        return report.recording && !report.facts.session.empty() &&
               report.facts.session == reports.front().facts.session;
    });
}

Json ToJson(const std::vector<RecordingReport>& reports) {
    Json json{{"one_session", OneSession(reports)}, {"recordings", Json::array()}};
    for (const RecordingReport& report : reports) json["recordings"].push_back(ToJson(report));
    return json;
}

std::string ToText(const std::vector<RecordingReport>& reports) {
    const bool together = OneSession(reports);
    double earliest = std::numeric_limits<double>::max();
    for (const RecordingReport& report : reports) earliest = std::min(earliest, report.first_seconds);
    TableRows rows{{"file", "serial", "frames", "first frame", "last frame", "frames/s", "missing", "state"}};
    struct Line {
        double seconds;
        std::vector<std::string> words;
    };
    std::vector<Line> gaps;
    for (const RecordingReport& report : reports) {
        const std::string name = zel::platform::Utf8Text(zel::platform::Utf8Path(report.file).filename());
        const double begin = report.first_seconds - (together ? earliest : report.first_seconds);
        rows.push_back({name, report.facts.serial.empty() ? "-" : Printable(report.facts.serial),
                        std::to_string(report.frames), fmt::format("+{:.3f} ms", begin * 1000.0),
                        fmt::format("{:.3f} s", begin + report.seconds), RecordedRateText(report.host_rate),
                        std::to_string(report.Missing()), StateText(report)});
        for (const RecordingGap& gap : report.gaps) {
            const double at = gap.seconds - (together ? earliest : report.first_seconds);
            gaps.push_back({at, {fmt::format("{:.3f} s", at), name, GapText(gap)}});
        }
    }
    std::string text = FormatTable(rows);
    if (!together) text += "not of one session: times count from each file's own first frame\n";
    std::ranges::stable_sort(gaps, {}, &Line::seconds);
    TableRows lines{{"at", "file", "gap"}};
    for (const Line& line : gaps) lines.push_back(line.words);
    if (gaps.empty()) return text + "no gaps\n";
    const std::size_t more = lines.size() > kGapsShown + 1 ? lines.size() - kGapsShown - 1 : 0;
    lines.resize(lines.size() - more);
    return text + FormatTable(lines) + (more ? fmt::format("and {} more; --json has them all\n", more) : "");
}

}  // namespace zelcam
