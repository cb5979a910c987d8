#include "record/OmeXml.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace zel::record {

namespace {

constexpr const char* kSchema = "http://www.openmicroscopy.org/Schemas/OME/2016-06";
constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kMicrosecondsPerSecond = 1e6;

template <class Number>
std::string Text(Number value) {
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() ? std::string(text.data(), end) : "0";
}

// Control characters have no form in XML; bytes from a camera may be anything.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '&') {
            escaped += "&amp;";
        } else if (c == '<') {
            escaped += "&lt;";
        } else if (c == '>') {
            escaped += "&gt;";
        } else if (c == '"') {
            escaped += "&quot;";
        } else {
            escaped += code < 0x20 ? ' ' : c;
        }
    }
    return escaped;
}

std::string Attribute(const char* name, const std::string& value) {
    return value.empty() ? "" : std::string(" ") + name + "=\"" + Escaped(value) + "\"";
}

const char* ColorText(int phase) {
    constexpr const char* kTexts[] = {"", ", raw color, red first", ", raw color, blue first",
                                      ", raw color, green first, red beside it",
                                      ", raw color, green first, blue beside it"};
    return phase > 0 && phase < 5 ? kTexts[phase] : "";
}

std::string Binning(const RecordingFacts& facts) {
    const bool known =
        facts.x_bin == facts.y_bin && (facts.x_bin == 1 || facts.x_bin == 2 || facts.x_bin == 4 || facts.x_bin == 8);
    return known ? Text(facts.x_bin) + "x" + Text(facts.y_bin) : "Other";
}

double Seconds(const FrameFacts& frame) { return static_cast<double>(frame.host_ns) / kNanosecondsPerSecond; }

std::string Plane(std::size_t index, const FrameFacts& frame) {
    return "<Plane TheZ=\"0\" TheT=\"" + Text(index) + "\" TheC=\"0\" DeltaT=\"" + Text(Seconds(frame)) +
           "\" DeltaTUnit=\"s\" ExposureTime=\"" + Text(frame.exposure_us / kMicrosecondsPerSecond) +
           "\" ExposureTimeUnit=\"s\"/>";
}

}  // namespace

std::string OmeXml(const RecordingFacts& facts, std::span<const FrameFacts> frames, const RecordingEnd& end,
                   bool planes) {
    const std::string count = Text(frames.size());
    const std::string gain = frames.empty() ? "0" : Text(frames.front().gain);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<OME xmlns=\"" + std::string(kSchema) +
                      "\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:schemaLocation=\"" + kSchema +
                      " " + kSchema + "/ome.xsd\"" + Attribute("Creator", facts.software) + ">";
    xml += "<Instrument ID=\"Instrument:0\"><Detector ID=\"Detector:0\" Gain=\"" + gain + "\"" +
           Attribute("Model", facts.model) + Attribute("SerialNumber", facts.serial) + "/></Instrument>";
    xml += "<Image ID=\"Image:0\"" + Attribute("Name", facts.camera) + ">";
    if (!facts.started.empty()) xml += "<AcquisitionDate>" + Escaped(facts.started) + "</AcquisitionDate>";
    xml += "<Description>" + Escaped(facts.camera + ", " + facts.link + ColorText(facts.cfa_phase)) +
           "; ended: " + Escaped(end.reason) + "</Description>";
    xml += "<InstrumentRef ID=\"Instrument:0\"/>";
    xml += "<Pixels ID=\"Pixels:0\" DimensionOrder=\"XYCZT\" Type=\"uint16\" BigEndian=\"false\" SignificantBits=\"" +
           Text(facts.bits) + "\" SizeX=\"" + Text(facts.width) + "\" SizeY=\"" + Text(facts.height) +
           "\" SizeZ=\"1\" SizeC=\"1\" SizeT=\"" + count + "\"";
    if (facts.pixel_um > 0.0) {
        const std::string size = Text(facts.pixel_um);
        xml += " PhysicalSizeX=\"" + size + "\" PhysicalSizeXUnit=\"\u00b5m\" PhysicalSizeY=\"" + size +
               "\" PhysicalSizeYUnit=\"\u00b5m\"";
    }
    if (frames.size() > 1) {
        const double span = Seconds(frames.back()) - Seconds(frames.front());
        xml += " TimeIncrement=\"" + Text(span / static_cast<double>(frames.size() - 1)) + "\" TimeIncrementUnit=\"s\"";
    }
    xml += "><Channel ID=\"Channel:0:0\" SamplesPerPixel=\"1\"><DetectorSettings ID=\"Detector:0\" Gain=\"" + gain +
           "\" Binning=\"" + Binning(facts) + "\"/></Channel>";
    xml += "<TiffData IFD=\"0\" PlaneCount=\"" + count + "\"/>";
    for (std::size_t i = 0; planes && i < frames.size(); ++i) xml += Plane(i, frames[i]);
    return xml + "</Pixels></Image></OME>";
}

}  // namespace zel::record
