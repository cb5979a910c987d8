#include "tapbalance/FlashPages.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace zel {

namespace {

constexpr const char* kPageSize = "TapBalance::GetPageSizeFromCamera";
constexpr const char* kNumPages = "TapBalance::GetNumPagesFromCamera";
constexpr const char* kClear = "TapBalance::ClearPageInMemory";
constexpr const char* kReadPage = "TapBalance::ReadPageFromFlash";
constexpr const char* kWritePage = "TapBalance::WritePageToFlash";
constexpr const char* kRead = "TapBalance::ReadData";
constexpr const char* kWrite = "TapBalance::WriteData";

// More than any flash has; keeps positions and page numbers far from overflow.
constexpr int kLargestPage = 1 << 24;
constexpr int kMostPages = 1 << 24;

const char* SkipBlanks(const char* text) {
    while (*text == ' ' || *text == '\t' || *text == '\r' || *text == '\n') ++text;
    return text;
}

}  // namespace

bool ParseHexNumbers(const char* text, std::span<std::uint32_t> numbers) {
    const char* const end = text + std::strlen(text);
    for (std::uint32_t& number : numbers) {
        text = SkipBlanks(text);
        if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) text += 2;
        const auto [stop, error] = std::from_chars(text, end, number, 16);
        const bool separated = stop == end || SkipBlanks(stop) != stop;
        if (error != std::errc() || !separated) return false;
        text = stop;
    }
    return SkipBlanks(text) == end;
}

void FlashPages::Forget() {
    m_PageSize = 0;
    m_NumPages = 0;
    m_CurrPage = kNoPage;
}

bool FlashPages::Exchange(const char* function_name, const char* command, char* reply) {
    if (!m_TextProtocol.Exchange(command, reply)) {
        ZEL_LOG(m_Logger, kLogError, function_name, "***ERROR***: no reply to \"%s\"", command);
        return false;
    }
    ZEL_LOG(m_Logger, kLogTrace, function_name, "%s returned \"%s\"", command, reply);
    if (std::strncmp(reply, "ERR", 3) == 0) {
        ZEL_LOG(m_Logger, kLogError, function_name, "***ERROR***: the camera refused \"%s\": \"%s\"", command, reply);
        return false;
    }
    return true;
}

bool FlashPages::Command(const char* function_name, const char* command) {
    char reply[TextProtocol::kReplyCapacity];
    return Exchange(function_name, command, reply);
}

bool FlashPages::Query(const char* function_name, const char* command, int& value) {
    char reply[TextProtocol::kReplyCapacity];
    if (!Exchange(function_name, command, reply)) return false;
    std::uint32_t number = 0;
    if (!ParseHexNumbers(reply, {&number, 1}) || number > 0x7FFFFFFFu) {
        ZEL_LOG(m_Logger, kLogError, function_name, "***ERROR***: the reply to \"%s\" is no number: \"%s\"", command,
                reply);
        return false;
    }
    ZEL_LOG(m_Logger, kLogTrace, function_name, "value:0x%x [value: 0x%x]", number, number);
    value = static_cast<int>(number);
    return true;
}

bool FlashPages::GetPageSizeFromCamera() {
    char reply[TextProtocol::kReplyCapacity];
    m_PageSize = 0;
    if (!Exchange(kPageSize, "tb f s", reply)) return false;
    ZEL_LOG(m_Logger, kLogTrace, kPageSize, "rx_buffer:%s", reply);
    int size = 0;
    if (!Query(kPageSize, "tb p s", size)) return false;
    ZEL_LOG(m_Logger, kLogTrace, kPageSize, "EXIT - page size: %d", size);
    if (size < 1 || size > kLargestPage) {
        ZEL_LOG(m_Logger, kLogError, kPageSize, "***ERROR***: page size %d is out of bounds", size);
        return false;
    }
    m_PageSize = size;
    return true;
}

bool FlashPages::GetNumPagesFromCamera() {
    m_NumPages = 0;
    int pages = 0;
    if (!Query(kNumPages, "tb p n", pages)) return false;
    ZEL_LOG(m_Logger, kLogTrace, kNumPages, "num pages: %d", pages);
    if (pages < 1 || pages > kMostPages) {
        ZEL_LOG(m_Logger, kLogError, kNumPages, "***ERROR***: number of pages %d is out of bounds", pages);
        return false;
    }
    m_NumPages = pages;
    return true;
}

bool FlashPages::Prepare() {
    return (m_PageSize > 0 || GetPageSizeFromCamera()) && (m_NumPages > 0 || GetNumPagesFromCamera());
}

bool FlashPages::ClearPageInMemory() {
    m_CurrPage = kNoPage;
    return Command(kClear, "tb p c");
}

bool FlashPages::ReadPageFromFlash(int page) {
    char command[32];
    std::snprintf(command, sizeof command, "tb g %x", static_cast<unsigned>(page));
    m_CurrPage = kNoPage;
    if (!Command(kReadPage, command)) return false;
    m_CurrPage = page;
    return true;
}

bool FlashPages::WritePageToFlash(int page) {
    char command[32];
    std::snprintf(command, sizeof command, "tb s %x", static_cast<unsigned>(page));
    m_CurrPage = kNoPage;
    if (!Command(kWritePage, command)) return false;
    m_CurrPage = page;
    return true;
}

bool FlashPages::LoadPage(int page) { return page == m_CurrPage || ReadPageFromFlash(page); }

bool FlashPages::ReadSequence(std::uint32_t offset, std::span<std::uint8_t> out) {
    char command[48];
    char reply[TextProtocol::kReplyCapacity];
    std::array<std::uint32_t, kSequence> numbers{};
    const std::span values = std::span(numbers).first(out.size());
    std::snprintf(command, sizeof command, "tb r %x %x", offset, static_cast<unsigned>(out.size()));
    if (!Exchange(kRead, command, reply)) return false;
    if (!ParseHexNumbers(reply, values) || std::ranges::max(values) > 0xFF) {
        ZEL_LOG(m_Logger, kLogError, kRead, "***ERROR***: the reply to \"%s\" is not %d bytes: \"%s\"", command,
                static_cast<int>(out.size()), reply);
        return false;
    }
    for (std::size_t i = 0; i < out.size(); ++i) {
        ZEL_LOG(m_Logger, kLogTrace, kRead, "value:0x%x [value: 0x%x]", values[i], values[i]);
        out[i] = static_cast<std::uint8_t>(values[i]);
    }
    return true;
}

bool FlashPages::ReadData(std::uint32_t offset, std::span<std::uint8_t> out) {
    while (!out.empty()) {
        const std::size_t count = std::min(kSequence, out.size());
        const auto size = static_cast<unsigned>(count);
        if (!ReadSequence(offset, out.first(count))) {
            ZEL_LOG(m_Logger, kLogError, kRead, "***ERROR***: \"tb r %x %x\" failed, attempting retry.", offset, size);
            if (!ReadSequence(offset, out.first(count))) {
                ZEL_LOG(m_Logger, kLogError, kRead, "***ERROR***: \"tb r %x %x\" failed, retry failed. Giving up",
                        offset, size);
                m_CurrPage = kNoPage;
                return false;
            }
        }
        offset += size;
        out = out.subspan(count);
    }
    return true;
}

bool FlashPages::WriteSequence(std::uint32_t offset, std::span<const std::uint8_t> bytes) {
    char command[96];
    int length = std::snprintf(command, sizeof command, "tb w %x", offset);
    for (const std::uint8_t byte : bytes) {
        length += std::snprintf(command + length, sizeof command - static_cast<std::size_t>(length), " %x", byte);
    }
    // The same bytes at the same place: trying again does no harm.
    return Command(kWrite, command) || Command(kWrite, command);
}

bool FlashPages::WriteData(std::uint32_t offset, std::span<const std::uint8_t> bytes) {
    m_CurrPage = kNoPage;  // the buffer is no flash page any more
    while (!bytes.empty()) {
        const std::size_t count = bytes.size() >= kSequence ? kSequence : 1;
        if (!WriteSequence(offset, bytes.first(count))) return false;
        offset += static_cast<std::uint32_t>(count);
        bytes = bytes.subspan(count);
    }
    return true;
}

bool FlashPages::ReadAt(std::uint64_t position, std::span<std::uint8_t> out) {
    if (!Prepare()) return false;
    if (position > Size() || out.size() > Size() - position) {
        ZEL_LOG(m_Logger, kLogError, kRead, "***ERROR***: %d bytes at offset 0x%08llx lie outside the flash (%d x %d)",
                static_cast<int>(out.size()), static_cast<unsigned long long>(position), m_NumPages, m_PageSize);
        return false;
    }
    const auto page_size = static_cast<unsigned>(m_PageSize);
    int page = static_cast<int>(position / page_size);
    auto offset = static_cast<std::uint32_t>(position % page_size);
    if (out.size() <= page_size - offset) return LoadPage(page) && ReadData(offset, out);
    for (std::uint8_t& byte : out) {
        if (offset == page_size) {
            ++page;
            offset = 0;
        }
        if (!LoadPage(page) || !ReadData(offset++, {&byte, 1})) return false;
    }
    return true;
}

bool FlashPages::WritePages(int first_page, std::span<const std::uint8_t> bytes) {
    if (!Prepare()) return false;
    for (int page = first_page; !bytes.empty(); ++page) {
        const std::size_t count = std::min(static_cast<std::size_t>(m_PageSize), bytes.size());
        if (page >= m_NumPages) {
            ZEL_LOG(m_Logger, kLogError, kWritePage, "***ERROR***: page %d lies outside the flash (%d x %d)", page,
                    m_NumPages, m_PageSize);
            return false;
        }
        if (!ClearPageInMemory() || !WriteData(0, bytes.first(count)) || !WritePageToFlash(page)) return false;
        bytes = bytes.subspan(count);
    }
    return true;
}

}  // namespace zel
