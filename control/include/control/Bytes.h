// Raw bytes. A std::string because it can grow without first writing zeros (resize_and_overwrite),
// which counts on the road of a read; nothing says that the content is text.
#pragma once

#include <string>
#include <string_view>

namespace tarnel {

using Bytes = std::string;
using BytesView = std::string_view;

}  // namespace tarnel
