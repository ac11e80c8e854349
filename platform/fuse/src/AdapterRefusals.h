// The operations that would change the tree, each answered as the volume refuses it.
#pragma once

#include "FuseReply.h"

namespace tarnel {

void addRefusals(fuse_lowlevel_ops& operations);

}  // namespace tarnel
