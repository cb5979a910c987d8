// The camera's calibration flash. It is reached through one page buffer in the camera: a page is loaded into it, then
// read (or written) a few bytes at a time, then stored. Everything travels as text commands without a line end:
//
//    tb p s              the page size          tb r OFFSET COUNT         read from the page buffer, at most 8 bytes
//    tb p n              the number of pages    tb w OFFSET B0 ... B7     write 8 bytes into the page buffer
//    tb p c              clear the page buffer  tb w OFFSET B             write one byte
//    tb g PAGE           load a page            tb s PAGE                 store the page buffer
//    tb f s              announces the page size query
//
// Numbers are hexadecimal in both directions. Replies to reading commands are numbers separated by blanks; others say
// "OK"; a reply that begins with "ERR" is a failure.
#ifndef TAPBALANCE_FLASHPAGES_H
#define TAPBALANCE_FLASHPAGES_H

#include <cstdint>
#include <span>

#include "link/TextProtocol.h"
#include "sdk/Logger.h"

namespace zel {

class FlashPages {
  public:
    FlashPages(TextProtocol& text_protocol, Logger& logger) : m_TextProtocol(text_protocol), m_Logger(logger) {}

    // What is known of the flash is asked for again at its next use.
    void Forget();

    bool GetPageSizeFromCamera();
    bool GetNumPagesFromCamera();
    // Asks for both unless they are known.
    bool Prepare();
    int PageSize() const { return m_PageSize; }
    int NumPages() const { return m_NumPages; }
    std::uint64_t Size() const {
        return std::uint64_t{static_cast<unsigned>(m_PageSize)} * static_cast<unsigned>(m_NumPages);
    }

    // The camera's page buffer.
    bool ClearPageInMemory();
    bool ReadPageFromFlash(int page);
    bool WritePageToFlash(int page);
    bool ReadData(std::uint32_t offset, std::span<std::uint8_t> out);
    bool WriteData(std::uint32_t offset, std::span<const std::uint8_t> bytes);

    // Bytes from anywhere in the flash. Pages are loaded as needed; bytes that lie across a page's end come one by one.
    bool ReadAt(std::uint64_t position, std::span<std::uint8_t> out);
    // Whole pages from `first_page` on; what the last one holds behind the bytes is cleared.
    bool WritePages(int first_page, std::span<const std::uint8_t> bytes);

  private:
    static constexpr std::size_t kSequence = 8;  // bytes of one command
    static constexpr int kNoPage = -1;

    bool Exchange(const char* function_name, const char* command, char* reply);
    bool Command(const char* function_name, const char* command);
    bool Query(const char* function_name, const char* command, int& value);
    bool LoadPage(int page);
    bool ReadSequence(std::uint32_t offset, std::span<std::uint8_t> out);
    bool WriteSequence(std::uint32_t offset, std::span<const std::uint8_t> bytes);

    TextProtocol& m_TextProtocol;
    Logger& m_Logger;
    int m_PageSize = 0;
    int m_NumPages = 0;
    int m_CurrPage = kNoPage;  // in the camera's page buffer
};

// The numbers of a reply: exactly as many as asked for, hexadecimal, with or without "0x", separated by blanks.
bool ParseHexNumbers(const char* text, std::span<std::uint32_t> numbers);

}  // namespace zel

#endif
