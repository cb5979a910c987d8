// The file of a recording as libtiff writes it.
//
//   0               4096                              | strip data at multiples of the alignment
//   header  | gap   strip 0 | page 0 | gap | strip 1 | page 1 | gap | ...
//     '---------------------->'  '------------------------->'         each page points to the next one
//
// What is written in between Begin() and Commit() waits in memory, where libtiff finds it again: first goes what is
// new, then the pointer to it. So the file is whole at every moment, although libtiff sets the pointer first.
#ifndef ZEL_TIFFOUTPUT_H
#define ZEL_TIFFOUTPUT_H

#include <tiffio.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "platform/GrowingFile.h"

namespace zel::record {

class TiffOutput {
  public:
    // Makes the file. alignment: of strip data. Throws RecordError.
    TiffOutput(const std::filesystem::path& path, std::uint64_t alignment);
    ~TiffOutput();
    TiffOutput(const TiffOutput&) = delete;
    TiffOutput& operator=(const TiffOutput&) = delete;

    TIFF* Handle() const { return m_Tiff; }
    void Begin();
    // What is new goes into the gap behind the header, where there is room for a page when there is no other.
    void BeginInGap();
    // Throws RecordError; the file is then as it was at the one before.
    void Commit();
    // Forgets what came since the last Commit().
    void Drop();
    // As Drop(), and has libtiff read the file anew, from its first page on. Throws RecordError.
    void Reopen();
    // Gives back what is reserved and closes the file. Throws RecordError.
    void Close();

    // Makes sure of so many bytes behind what is there. Throws RecordError when the disk has not that much. `ahead`:
    // bytes that are taken beyond them, where there are as many.
    void Require(std::uint64_t bytes, std::uint64_t ahead);
    // What was committed goes to the disk.
    void WriteBehind() { m_File.WriteBehind(m_LastStart); }
    // Size of the file, up to the last Commit().
    std::uint64_t Size() const { return m_End; }
    // Throws the RecordError of what libtiff could not do.
    [[noreturn]] void Fail(const std::string& what);

  private:
    static tmsize_t OnRead(thandle_t self, void* data, tmsize_t size);
    static tmsize_t OnWrite(thandle_t self, void* data, tmsize_t size);
    static toff_t OnSeek(thandle_t self, toff_t offset, int from);
    static toff_t OnSize(thandle_t self);
    static int OnError(TIFF* tiff, void* self, const char* module, const char* format, va_list values);

    void Open(const char* mode);
    bool Read(std::uint64_t offset, std::span<std::byte> bytes) const;
    bool Write(std::uint64_t offset, std::span<const std::byte> bytes);
    std::uint64_t EndForNext() const;

    std::filesystem::path m_Path;
    platform::GrowingFile m_File;
    const std::uint64_t m_Alignment;
    TIFF* m_Tiff = nullptr;
    std::uint64_t m_Position = 0;
    std::uint64_t m_End = 0;  // of what is committed
    std::string m_Problem;    // what libtiff said last

    bool m_Gathering = false;
    std::uint64_t m_Start = 0;                                   // where the new bytes begin
    std::uint64_t m_Room = 0;                                    // that there is for them; 0: without bounds
    std::vector<std::byte> m_New;                                // since Begin()
    std::map<std::uint64_t, std::vector<std::byte>> m_Pointers;  // into what was there before
    std::uint64_t m_LastStart = 0;                               // the new bytes of the Commit() before
    std::vector<std::byte> m_Last;
};

}  // namespace zel::record

#endif
