#include "link/SyncTableNames.h"

#include <cstdio>

#include "link/SyncTableIndex.h"

namespace zel {

namespace {

constexpr const char* kEntryNames[] = {
#define ZEL_SYNC_TABLE_TEXT(name) #name,
    ZEL_SYNC_TABLE_ENTRIES(ZEL_SYNC_TABLE_TEXT)
#undef ZEL_SYNC_TABLE_TEXT
};
static_assert(sizeof(kEntryNames) / sizeof(kEntryNames[0]) == SYNC_TABLE_SELECT_MAX, "one name for each entry");

const char* CommandName(int command) {
    switch (command) {
        case SYNC_TABLE_CMD_GET:
            return "SYNC_TABLE_CMD_GET";
        case SYNC_TABLE_CMD_SET:
            return "SYNC_TABLE_CMD_SET";
        case SYNC_TABLE_CMD_UNREAD_COUNT:
            return "SYNC_TABLE_CMD_UNREAD_COUNT";
        case SYNC_TABLE_CMD_UNREAD_INDICES:
            return "SYNC_TABLE_CMD_UNREAD_INDICES";
        case SYNC_TABLE_CMD_GET_ATTRIBUTES:
            return "SYNC_TABLE_CMD_GET_ATTRIBUTES";
        case SYNC_TABLE_CMD_GET_DATAFLAGS:
            return "SYNC_TABLE_CMD_GET_DATAFLAGS";
        default:
            return nullptr;
    }
}

const char* ExceptionName(int code) {
    switch (code) {
        case kExceptionChange:
            return "CHANGE EXCEPTION";
        case kExceptionIncompleteData:
            return "INCOMPLETE DATA EXCEPTION";
        case kExceptionWriteToConst:
            return "WRITE TO CONST EXCEPTION";
        case kExceptionBadIndex:
            return "BAD INDEX EXCEPTION";
        case kExceptionWriteToReadOnly:
            return "WRITE TO READ ONLY EXCEPTION";
        case kExceptionRequiresCalc:
            return "REQUIRES CALC EXCEPTION";
        default:
            return nullptr;
    }
}

}  // namespace

const char* SyncTableName(int index) {
    return index >= 0 && index < SYNC_TABLE_SELECT_MAX ? kEntryNames[index] : "UNKNOWN";
}

SyncTableCommandText::SyncTableCommandText(int command) {
    if (const char* name = CommandName(command)) {
        std::snprintf(text, sizeof text, "%s", name);
    } else {
        std::snprintf(text, sizeof text, "UNKNOWN SYNC TABLE CMD:%d", command);
    }
}

SyncTableExceptionText::SyncTableExceptionText(int code) {
    if (const char* name = ExceptionName(code)) {
        std::snprintf(text, sizeof text, "%s", name);
    } else {
        std::snprintf(text, sizeof text, "UNKNOWN EXCEPTION %d (0x%02x)", code, static_cast<unsigned>(code));
    }
}

}  // namespace zel
