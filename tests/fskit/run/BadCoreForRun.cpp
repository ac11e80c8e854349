#include "BadCoreForRun.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "fskit/CoreHandles.h"

namespace {

using tarnel::Bytes;
using tarnel::FabricShare;
using tarnel::FabricSource;
using tarnel::FileStat;

class ThrowingSource final : public FabricSource {
 public:
  void shareListing(Reply<std::vector<FabricShare>>) override { refuse(); }
  void stat(const std::string&, Reply<FileStat>) override { refuse(); }
  void list(const std::string&, Reply<std::vector<FileStat>>) override { refuse(); }
  void read(const std::string&, std::int64_t, std::int64_t, Reply<Bytes>) override { refuse(); }
  void cancelAll() override { refuse(); }

 private:
  [[noreturn]] static void refuse() { throw std::runtime_error("a source that throws"); }
};

}  // namespace

TarnelCoreVolume* badCore() {
  return new TarnelCoreVolume{
      tarnel::FabricVolume::make({}, "Tarnel", std::make_shared<ThrowingSource>(), 501, 20, 0)};
}
