// A parameter's value, whatever its layout, and its translation to and from text and JSON.
#ifndef ZELCAM_PARAMETERVALUE_H
#define ZELCAM_PARAMETERVALUE_H

#include <array>
#include <cstddef>
#include <string>

#include "tools/zelcam/camera/ParameterInfo.h"
#include "tools/zelcam/text/Json.h"

namespace zelcam {

class ParameterValue {
  public:
    // Bytes that the widest value takes: nine doubles.
    static constexpr std::size_t kCapacity = 72;

    explicit ParameterValue(ValueKind kind) : m_Kind(kind) {}

    // The value as the user writes it: a number (decimal or 0x...), "x,y,width,height,xbin,ybin", or a text of up to 31
    // characters. Throws Failure.
    static ParameterValue Parse(const ParameterInfo& info, const std::string& text);

    void* Data() { return m_Bytes.data(); }
    const void* Data() const { return m_Bytes.data(); }

    std::string Text() const;
    Json ToJson() const;
    // Number kinds and the wide kind as one integer.
    long long Integer() const;

    bool operator==(const ParameterValue& other) const { return m_Kind == other.m_Kind && Text() == other.Text(); }

  private:
    ValueKind m_Kind;
    // Zeroed, so that an operation that answers without writing leaves a defined value.
    alignas(8) std::array<char, kCapacity> m_Bytes{};
};

// The integer in the first word of a text in the user's spelling; throws Failure naming `what`.
long long ParseInteger(const std::string& what, const std::string& text, long long lowest, long long highest);

// What a parameter accepts, as the camera states it.
struct ValueRange {
    bool known = false;
    long long minimum = 0;
    long long maximum = 0;
    long long standard = 0;  // the default

    bool Contains(long long value) const { return value >= minimum && value <= maximum; }
    std::string Text() const;  // "0..100", "unknown"
};

// The range from three 32-bit words. The camera does not say whether they are signed: they are unless that would put
// the maximum below the minimum.
ValueRange RangeFromWords(int minimum, int maximum, int standard);

// The range in another unit; bounds that do not divide are drawn inwards.
ValueRange ScaledRange(const ValueRange& range, long long factor, long long divisor);

}  // namespace zelcam

#endif
