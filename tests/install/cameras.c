/* Counts the cameras through the C interface. */
#include <stdio.h>
#include <zel.h>

int main(void) {
    zel_sdk* sdk = NULL;
    int32_t count = -1;
    if (zel_sdk_open(&sdk) != ZEL_OK || zel_sdk_find_cameras(sdk, &count) != ZEL_OK) puts(zel_error_message());
    printf("%d cameras\n", (int)count);
    return zel_sdk_close(sdk) == ZEL_OK ? 0 : 1;
}
