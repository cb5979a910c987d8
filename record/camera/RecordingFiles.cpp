#include "record/camera/RecordingFiles.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

namespace zel::record {

namespace fs = std::filesystem;

namespace {

std::string NumberText(unsigned number) {
    constexpr std::size_t kDigits = 4;
    const std::string digits = std::to_string(number);
    return "_" + std::string(kDigits - std::min(kDigits, digits.size()), '0') + digits;
}

}  // namespace

fs::path WithSuffix(const fs::path& path, const std::string& suffix) {
    fs::path name = path.stem();
    fs::path extension = path.extension();
    if (name.extension() == ".ome") {
        extension = fs::path(".ome").concat(extension.native());
        name = name.stem();
    }
    name += suffix;
    return path.parent_path() / name.concat(extension.native());
}

RecordingFiles::RecordingFiles(const RecordingFacts& facts, FileOptions options)
    : m_Facts(facts), m_Options(std::move(options)) {}

RecordingFiles::~RecordingFiles() = default;

void RecordingFiles::Begin(const LossTally& tally) {
    const bool numbered = m_Options.numbered || Splits();
    WriterOptions options{m_Options.compression, 0};
    options.reserve = m_Options.reserve - std::min(m_Options.reserve, m_Bytes);
    if (m_Options.split_bytes > 0) options.reserve = std::min(options.reserve, m_Options.split_bytes);
    while (!m_Writer) {
        m_Path = numbered ? WithSuffix(m_Options.file, NumberText(++m_Number)) : m_Options.file;
        try {
            m_Writer = std::make_unique<RecordingWriter>(m_Path, m_Facts, options);
        } catch (const FileTakenError&) {
            if (!numbered) throw;
        }
    }
    m_Before = tally;
}

void RecordingFiles::Describe(const RecordingFacts& facts) {
    m_Facts = facts;
    m_Writer->Describe(facts);
}

bool RecordingFiles::SplitBefore(std::int64_t host_ns) const {
    if (m_Writer->Frames() == 0) return false;
    if (m_Options.split_frames > 0 && m_Writer->Frames() >= m_Options.split_frames) return true;
    if (m_Options.split_bytes > 0 && m_Writer->Bytes() + m_LastStrip > m_Options.split_bytes) return true;
    return m_Options.split_seconds > 0.0 && SecondsOf(host_ns - m_FirstNs) >= m_Options.split_seconds;
}

void RecordingFiles::Write(std::span<const std::byte> strip, const FrameFacts& frame) {
    if (m_Writer->Frames() == 0) m_FirstNs = frame.host_ns;
    m_LastStrip = strip.size();
    m_Writer->AddStrip(strip, frame);
}

void RecordingFiles::End(const std::string& reason, const LossTally& tally) {
    const std::unique_ptr<RecordingWriter> writer = std::move(m_Writer);
    if (!writer) return;
    RecordedFile file{m_Path, 0, {}};
    file.end.reason = reason;
    file.end.frames = writer->Frames();
    const std::uint64_t missing = tally.missing - m_Before.missing;
    file.end.lost_link = std::min(tally.link_drops - std::min(tally.link_drops, m_Before.link_drops), missing);
    file.end.lost_buffer = missing - file.end.lost_link;
    file.end.lost_disk = tally.lost_disk - m_Before.lost_disk;
    file.end.passed_over = tally.passed_over - m_Before.passed_over;
    try {
        writer->Finish(file.end);
    } catch (const RecordError&) {
        // What is in it stays.
        file.bytes = writer->Bytes();
        m_Bytes += file.bytes;
        m_Ended.push_back(file);
        throw;
    }
    if (file.end.frames == 0) {
        std::error_code ignored;
        fs::remove(m_Path, ignored);
        return;
    }
    file.bytes = writer->Bytes();
    m_Bytes += file.bytes;
    m_Ended.push_back(file);
}

RecordingEnd SumOf(const std::vector<RecordedFile>& files) {
    RecordingEnd sum;
    for (const RecordedFile& file : files) {
        sum.frames += file.end.frames;
        sum.lost_link += file.end.lost_link;
        sum.lost_buffer += file.end.lost_buffer;
        sum.lost_disk += file.end.lost_disk;
        sum.passed_over += file.end.passed_over;
        sum.reason = file.end.reason;
    }
    return sum;
}

}  // namespace zel::record
