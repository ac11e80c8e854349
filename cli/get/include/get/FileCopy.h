// Copies one file of the host whose status is known: as a stream, or in chunks from a host that
// does not serve streams. Threads: one.
#pragma once

#include <string>

#include "get/CopyContext.h"
#include "get/FolderChain.h"

namespace tarnel {

// Into the folder where the chain stands, under `name`. What goes wrong is told; false then.
bool copyFile(CopyContext& context, FolderChain& chain, const std::string& remote,
              const std::string& name, const HostEntry& status);

}  // namespace tarnel
