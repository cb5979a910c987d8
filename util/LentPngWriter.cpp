#include "util/LentPngWriter.h"

#include <array>
#include <atomic>
#include <new>
#include <utility>

namespace zel {

namespace {

// Belongs to no thread, so that none leaves anything behind when it ends, and takes no lock. Goes with the library;
// what is given back after that, at the end of the process, stays.
class IdleWriters {
  public:
    IdleWriters() = default;
    ~IdleWriters() {
        for (std::atomic<PngWriter*>& place : m_Places) delete place.exchange(nullptr);
    }
    IdleWriters(const IdleWriters&) = delete;
    IdleWriters& operator=(const IdleWriters&) = delete;

    std::unique_ptr<PngWriter> Take() {
        for (std::atomic<PngWriter*>& place : m_Places) {
            if (PngWriter* const writer = place.exchange(nullptr)) return std::unique_ptr<PngWriter>(writer);
        }
        return nullptr;
    }
    void Keep(std::unique_ptr<PngWriter> writer) {
        for (std::atomic<PngWriter*>& place : m_Places) {
            PngWriter* nobody = nullptr;
            if (!place.compare_exchange_strong(nobody, writer.get())) continue;
            writer.release();
            return;
        }
    }

  private:
    std::array<std::atomic<PngWriter*>, LentPngWriter::kKeptWriters> m_Places{};
};

IdleWriters& IdleWritersFor(PngFilters filters) {
    static IdleWriters none, chosen;
    return filters == PngFilters::kNone ? none : chosen;
}

}  // namespace

LentPngWriter::LentPngWriter(PngFilters filters) : m_Filters(filters), m_Writer(IdleWritersFor(filters).Take()) {
    if (!m_Writer) m_Writer.reset(new (std::nothrow) PngWriter(filters));
}

LentPngWriter::~LentPngWriter() {
    if (!m_Writer) return;
    m_Writer->Trim(kKeptBytes);
    IdleWritersFor(m_Filters).Keep(std::move(m_Writer));
}

}  // namespace zel
