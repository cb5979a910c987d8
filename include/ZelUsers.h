/// @file
/// The SDK in a program of several libraries: who uses it, and who has which camera.
///
/// There is one SDK object in a process. zel_destroy_sdk() ends it for everyone, so libraries that know nothing of each
/// other are counted here instead: the object is there as long as one of them uses it. The C++ layer, and with it the C
/// interface and everything made with either, does so by itself.
#ifndef ZEL_USERS_H
#define ZEL_USERS_H

#include "ZelPlatform.h"
#include "ZelSDK.h"

extern "C" {

/// One more user of the SDK: creates the SDK object where there is none, and opens it. Waits for a user that is just
/// ending it. Any thread.
/// @return the object; null when memory ran out, or from inside a callback in which the SDK was closed. Nobody was
///         counted then
ZelSDK* ZEL_CALL zel_retain_sdk();

/// One user less. The last one closes and deletes the SDK object, also when the program took it with zel_create_sdk();
/// when the program has deleted it already, nothing happens. To be called once for each zel_retain_sdk() that was not
/// null.
void ZEL_CALL zel_release_sdk();

/// Enters a camera as the caller's, so that no other library of this program opens it, starts it or sets callbacks of
/// its own. To be asked before ZelCamera::Open(). Who does not ask is not kept from anything.
/// @param camera the camera object; not looked into
/// @return 1: the caller has it until zel_release_camera(); 0: somebody has it, or memory ran out
int ZEL_CALL zel_claim_camera(const ZelCamera* camera);

/// The camera is closed, and anybody's to have. One that nobody has is left as it is.
/// @param camera what zel_claim_camera() was given
void ZEL_CALL zel_release_camera(const ZelCamera* camera);
}

#endif
