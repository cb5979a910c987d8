// Calls the version export with the type-encoded name, which shares its C++ name with the one in ZelSDK.h.
char* get_version_str();

const char* BuildVersion();
const char* BuildVersion() { return get_version_str(); }
