#import "SurfaceSpy.h"

#include "fskit/TarnelCore.h"

static uint64_t lastCookie;
static uint64_t lastVerifier;

uint64_t spiedCookie(void) { return __atomic_load_n(&lastCookie, __ATOMIC_SEQ_CST); }
uint64_t spiedVerifier(void) { return __atomic_load_n(&lastVerifier, __ATOMIC_SEQ_CST); }

// The linker puts the first in the place of the surface's own, and calls that the second.
void __wrap_tarnelVolumeEnumerate(TarnelCoreVolume* volume, const TarnelCoreItem* directory,
                                  uint64_t cookie, uint64_t verifier, const uint64_t* wanted,
                                  TarnelPacker packer, TarnelVerifierReply reply, void* context);
void __real_tarnelVolumeEnumerate(TarnelCoreVolume* volume, const TarnelCoreItem* directory,
                                  uint64_t cookie, uint64_t verifier, const uint64_t* wanted,
                                  TarnelPacker packer, TarnelVerifierReply reply, void* context);

void __wrap_tarnelVolumeEnumerate(TarnelCoreVolume* volume, const TarnelCoreItem* directory,
                                  uint64_t cookie, uint64_t verifier, const uint64_t* wanted,
                                  TarnelPacker packer, TarnelVerifierReply reply, void* context) {
  __atomic_store_n(&lastCookie, cookie, __ATOMIC_SEQ_CST);
  __atomic_store_n(&lastVerifier, verifier, __ATOMIC_SEQ_CST);
  __real_tarnelVolumeEnumerate(volume, directory, cookie, verifier, wanted, packer, reply, context);
}
