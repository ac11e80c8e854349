// What the command loads the volume from, where no system offers a resource.
#pragma once

#include <string_view>

#include "seam/Resource.h"

namespace tarnel {

class CommandResource final : public Resource {
 public:
  [[nodiscard]] std::string_view typeName() const override { return "CommandResource"; }
};

}  // namespace tarnel
