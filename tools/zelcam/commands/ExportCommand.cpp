// zelcam export: pictures of a recording's frames.
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <vector>

#include "include/ZelImage.h"
#include "platform/UserTexts.h"
#include "record/RecordingReader.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/commands/PlayOption.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/frames/PictureEncoder.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

// "a:b:step" of frames that are counted from 0; the last one is among them.
struct Selection {
    std::size_t first = 0;
    std::size_t last = 0;
    std::size_t step = 1;

    std::size_t Count() const { return (last - first) / step + 1; }
    bool Has(std::size_t frame) const { return frame >= first && frame <= last && (frame - first) % step == 0; }
};

bool ReadNumber(std::string_view text, std::size_t otherwise, std::size_t& number) {
    number = otherwise;
    if (text.empty()) return true;
    const auto [rest, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    return fault == std::errc() && rest == text.data() + text.size();
}

Selection Select(const std::string& wanted, std::size_t frames) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= wanted.size();) {
        const std::size_t end = std::min(wanted.find(':', begin), wanted.size());
        parts.push_back(wanted.substr(begin, end - begin));
        begin = end + 1;
    }
    const bool single = parts.size() == 1 && !wanted.empty();
    parts.resize(std::max<std::size_t>(parts.size(), 3));
    Selection selection;
    const bool understood = parts.size() == 3 && ReadNumber(parts[0], 0, selection.first) &&
                            ReadNumber(parts[1], single ? selection.first : frames - 1, selection.last) &&
                            ReadNumber(parts[2], 1, selection.step) && selection.step >= 1;
    if (!understood || selection.first > selection.last || selection.last >= frames) {
        throw Failure("--frames " + wanted, "it has frames 0 to " + std::to_string(frames - 1),
                      "write FIRST:LAST or FIRST:LAST:STEP with numbers among them", kUsage);
    }
    return selection;
}

CameraFacts RecordedCamera(const zel::record::RecordingFacts& recorded) {
    CameraFacts facts;
    facts.info.name = recorded.camera;
    facts.info.serial = recorded.serial;
    facts.info.interface_type = recorded.link;
    facts.model = recorded.model;
    facts.firmware = recorded.firmware;
    return facts;
}

void Describe(const zel::record::RecordingFacts& facts, const zel::record::FrameFacts& frame, ZelColorImage& image) {
    image.x_origin = facts.x_origin;
    image.y_origin = facts.y_origin;
    image.x_bin = facts.x_bin;
    image.y_bin = facts.y_bin;
    image.x_pixels = facts.width * facts.x_bin;
    image.y_pixels = facts.height * facts.y_bin;
    image.exposure_time_us = frame.exposure_us;
    image.image_number = frame.number;
    image.arrival_time_ms = image.hand_over_time_ms = frame.arrival_ms;
    image.queue_delay_ms = 0;
}

class ExportCommand : public Command {
  public:
    const char* Name() const override { return "export"; }
    const char* Help() const override { return "Save frames of a recording as pictures, each with a .json"; }
    const char* Example() const override { return "export run.ome.tif --frames 0:99:10 --format png --out pictures"; }

    void Declare(CLI::App& command) override {
        command.add_option("file", m_File, "Recording or TIFF stack")->required();
        command.add_option("--frames", m_Frames, "FIRST:LAST or FIRST:LAST:STEP, counted from 0 (default: all)");
        command.add_option("-o,--out", m_Pictures.folder, "Folder for the pictures, made when missing")
            ->capture_default_str();
        command.add_option("-p,--prefix", m_Pictures.prefix, "Beginning of the file names (default: the file's name)");
        command.add_option("-f,--format", m_Pictures.format, "tif (default) or png: 16-bit grey; with --color png")
            ->check(CLI::IsMember({"tif", "png"}));
        command.add_flag("--color", m_Color, "Color pictures of a color camera's recording, as the SDK makes them");
        command.add_flag("--scale", m_Pictures.scale, "Scale the counts to the full 16 bits (default: raw counts)");
        DeclareJson(command);
    }

    void Run(Json& result) override {
        try {
            zel::record::RecordingReader reader(zel::platform::Utf8Path(m_File));
            m_Selection = Select(m_Frames, reader.Frames());
            SettlePictures(reader);
            CatchInterrupts();
            ReportAlways([&] { m_Color ? SaveColor(reader) : SaveGrey(reader); }, [&] { Report(result); });
        } catch (const zel::record::RecordError& error) {
            throw Failure("'" + m_File + "' can't be read", error.what(), "choose a recording or a TIFF stack");
        }
        FailIfInterrupted(Counted(m_Saved.size(), "frame") + " saved");
    }

  private:
    void SettlePictures(const zel::record::RecordingReader& reader) {
        if (m_Color && reader.Facts().cfa_phase == 0) {
            throw Failure("--color", "the recording is monochrome", "leave --color out", kUsage);
        }
        if (m_Color && m_Pictures.format == "tif") {
            throw Failure("--format tif", "it is for grey pictures", "choose png with --color", kUsage);
        }
        m_Pictures.by_frame = true;
        m_Pictures.format = m_Color ? "16" : m_Pictures.format == "png" ? "png" : "tiff";
        if (!m_Pictures.prefix.empty()) return;
        const std::string name = zel::platform::Utf8Text(zel::platform::Utf8Path(m_File).filename());
        m_Pictures.prefix = name.substr(0, name.find('.', 1));
    }

    // What a run writes with.
    struct Writing {
        Writing(const zel::record::RecordingReader& reader, const PictureOptions& options, PictureSettings settings)
            : saver(options, static_cast<int>(reader.Frames()), RecordedCamera(reader.Facts()),
                    Averaged(settings, reader)) {}
        static PictureSettings& Averaged(PictureSettings& settings, const zel::record::RecordingReader& reader) {
            settings.average = reader.Facts().averaged;
            return settings;
        }
        PictureSaver saver;
        PictureEncoder encoder{saver};
        Progress progress{"saving"};
    };

    void SaveGrey(zel::record::RecordingReader& reader) {
        const zel::record::RecordingFacts& facts = reader.Facts();
        Writing writing(reader, m_Pictures, {});
        std::vector<unsigned short> samples(std::size_t{facts.width} * facts.height);
        ZelColorImage image{};
        for (std::size_t i = m_Selection.first; i <= m_Selection.last && !Interrupted(); i += m_Selection.step) {
            reader.Read(i, samples);
            image.w = facts.width;
            image.h = facts.height;
            image.bit_depth = facts.bits;
            image.bytes_per_pixel = sizeof(unsigned short);
            image.pixels = samples.data();
            image.num_pixels = image.w * image.h;
            image.size_in_bytes = image.buffer_size = image.num_pixels * image.bytes_per_pixel;
            Save(reader, i, image, writing);
        }
    }

    // The SDK makes color pictures of what a camera sends: one plays the recording to it. It is the only simulated one,
    // so that it is known which.
    void SaveColor(zel::record::RecordingReader& reader) {
        Play(m_File + ",once");
        zel::platform::SetEnvironment("ZEL_SIM_PACE", "none");
        for (const char* const variable : {"ZEL_SIM_CL_CAMERAS", "ZEL_SIM_EBUS_CAMERAS"}) {
            zel::platform::SetEnvironment(variable, "0");
        }
        zel::platform::SetEnvironment("ZEL_SIM_USB_CAMERAS", "1");
        zel::Sdk sdk;
        zel::Camera camera = sdk.open("500101");
        AcquisitionSettings settings;
        settings.color.color = true;
        Writing writing(reader, m_Pictures, PicturesOf(camera, settings, m_Pictures));
        Acquisition acquisition(camera, settings);
        for (std::size_t i = 0; i <= m_Selection.last; ++i) {
            const zel::Frame frame = acquisition.Next();
            if (!frame) return;
            if (m_Selection.Has(i)) Save(reader, i, *frame.native(), writing);
        }
    }

    void Save(const zel::record::RecordingReader& reader, std::size_t index, ZelColorImage& image, Writing& writing) {
        const zel::record::FrameFacts frame = reader.Frame(index);
        Describe(reader.Facts(), frame, image);
        writing.saver.SetSource(frame.gain, {{"file", m_File},
                                             {"frame", index},
                                             {"started_utc", reader.Facts().started},
                                             {"seconds", static_cast<double>(frame.host_ns) / 1e9}});
        const std::filesystem::path stem = writing.saver.Claim(static_cast<int>(index));
        m_Saved.push_back(writing.saver.Save(stem, image, writing.encoder));
        writing.progress.Show(m_Saved.size(), m_Selection.Count());
    }

    void Report(Json& result) const {
        if (m_Json) {
            result["frames"] = m_Saved.size();
            result["pictures"] = m_Saved;
            return;
        }
        for (const Json& picture : m_Saved) Print("{}\n", picture["path"].get<std::string>());
        Print("{} saved\n", Counted(m_Saved.size(), "frame"));
        FlushOutput();
    }

    std::string m_File;
    std::string m_Frames;
    bool m_Color = false;
    PictureOptions m_Pictures;
    Selection m_Selection;
    std::vector<Json> m_Saved;
};

}  // namespace

std::unique_ptr<Command> MakeExportCommand() { return std::make_unique<ExportCommand>(); }

}  // namespace zelcam
