// The second export called get_version_str: the one with a type-encoded name. It shares its C++ name with the entry
// point of ZelSDK.h, so that header can't be seen here.

// On purpose: this text differs from what the C entry point answers, and it never changes.
static char s_BuildVersion[] = "zel_sdk.dll version 0.000003";

char* get_version_str();
char* get_version_str() { return s_BuildVersion; }
