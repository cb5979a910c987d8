// Names of commands and exceptions for log lines.
#ifndef LINK_SYNCTABLENAMES_H
#define LINK_SYNCTABLENAMES_H

namespace zel {

// The command's name, or "UNKNOWN SYNC TABLE CMD:" and its number.
struct SyncTableCommandText {
    explicit SyncTableCommandText(int command);
    char text[48];
};

// The exception's name, or "UNKNOWN EXCEPTION" and its code.
struct SyncTableExceptionText {
    explicit SyncTableExceptionText(int code);
    char text[48];
};

}  // namespace zel

#endif
