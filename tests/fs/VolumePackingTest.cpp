// Dot entries, cookies and verifiers.
#include "VolumeTest.h"

namespace tarnel::test {
namespace {

using Names = std::vector<std::string>;

constexpr std::uint64_t emptyVerifier = 0xa8c7f832281a39c5;
constexpr VolumeError staleCookie{.domain = VolumeError::Domain::fileSystemKit, .code = 4506};

class VolumePacking : public VolumeTest {
 protected:
  VolumePacking() {
    source->putDirectory("me/Docs");
    docs = item("me/Docs");
  }

  std::shared_ptr<RecordingPacker> packer = std::make_shared<RecordingPacker>();
  std::shared_ptr<FabricItem> docs;
};

TEST_F(VolumePacking, anEmptyDirectoryByNamesIsTheDotEntries) {
  EXPECT_EQ(enumerate(docs, packer), std::tuple(emptyVerifier, std::nullopt));
  const std::vector<PackedEntry> expected = {
      {.name = ".", .itemType = ItemType::directory, .itemID = docs->id, .nextCookie = 1},
      {.name = "..", .itemType = ItemType::directory, .itemID = docs->parentID, .nextCookie = 2}};
  EXPECT_EQ(packer->entries(), expected);
}

TEST_F(VolumePacking, anEmptyDirectoryWithAttributesIsNothingUnderTheSameVerifier) {
  EXPECT_EQ(enumerate(docs, packer, allAttributes), std::tuple(emptyVerifier, std::nullopt));
  EXPECT_EQ(packer->offered(), 0u);
}

TEST_F(VolumePacking, theDotEntriesOfTheRootAreItsReservedIds) {
  (void)enumerate(root(), packer);
  EXPECT_EQ(packer->entries().at(0).itemID, 2u);
  EXPECT_EQ(packer->entries().at(1).itemID, 1u);
}

TEST_F(VolumePacking, namesComeAfterTheDotEntriesWithoutAttributes) {
  source->put("me/Docs/a", "x");
  (void)enumerate(docs, packer);
  EXPECT_EQ(packer->names(), (Names{".", "..", "a"}));
  EXPECT_EQ(packer->entries().at(2).nextCookie, 3u);
  for (const PackedEntry& entry : packer->entries()) EXPECT_EQ(entry.attributes, std::nullopt);
}

TEST_F(VolumePacking, aWantedSetThatIsEmptyIsNotNamesAlone) {
  source->put("me/Docs/a", "x");
  (void)enumerate(docs, packer, 0);
  EXPECT_EQ(packer->names(), Names{"a"});
  EXPECT_EQ(packer->entries().at(0).nextCookie, 1u);
  EXPECT_EQ(packer->entries().at(0).attributes, ItemAttributes{});
}

TEST_F(VolumePacking, theVerifierIsOfTheSafeSortedNames) {
  source->putListing("me/Docs", {{.name = "b"}, {.name = "a"}, {.name = "a/b"}});
  const std::uint64_t verifier = std::get<0>(enumerate(docs, packer));
  EXPECT_EQ(verifier, 0xbcfcf3e8cebe16f4u);
  source->putListing("me/Docs", {{.name = "a"}, {.name = "b"}});
  EXPECT_EQ(std::get<0>(enumerate(docs, packer, allAttributes)), verifier);
}

TEST_F(VolumePacking, aFullPackerStopsTheEntriesButNotTheVerifier) {
  source->put("me/Docs/a", "x");
  source->put("me/Docs/b", "x");
  source->put("me/Docs/c", "x");
  source->put("me/Docs/d", "x");
  const std::uint64_t verifier = std::get<0>(enumerate(docs, packer, allAttributes));
  const auto small = std::make_shared<RecordingPacker>(2);
  EXPECT_EQ(enumerate(docs, small, allAttributes), std::tuple(verifier, std::nullopt));
  EXPECT_EQ(small->names(), (Names{"a", "b"}));
  EXPECT_EQ(small->offered(), 3u);
}

TEST_F(VolumePacking, goesOnFromTheCookieOfTheLastEntryPacked) {
  for (const char* name : {"a", "b", "c", "d", "e"}) {
    source->put(std::string("me/Docs/") + name, "x");
  }
  for (const bool namesAlone : {true, false}) {
    const std::optional<WantedAttributes> wanted =
        namesAlone ? std::nullopt : std::optional<WantedAttributes>(0);
    const std::size_t total = namesAlone ? 7 : 5;
    Names all;
    std::uint64_t cookie = 0;
    std::uint64_t verifier = 0;
    while (all.size() < total) {
      const auto part = std::make_shared<RecordingPacker>(2);
      const auto [next, error] = enumerate(docs, part, wanted, cookie, verifier);
      ASSERT_EQ(error, std::nullopt);
      ASSERT_FALSE(part->entries().empty());
      for (const auto& name : part->names()) all.push_back(name);
      cookie = part->entries().back().nextCookie;
      verifier = next;
    }
    const Names expected =
        namesAlone ? Names{".", "..", "a", "b", "c", "d", "e"} : Names{"a", "b", "c", "d", "e"};
    EXPECT_EQ(all, expected);
    EXPECT_EQ(cookie, total);
  }
}

TEST_F(VolumePacking, aCookieAtTheEndPacksNothingAndSucceeds) {
  source->put("me/Docs/a", "x");
  const std::uint64_t verifier = std::get<0>(enumerate(docs, packer));
  const auto end = std::make_shared<RecordingPacker>();
  EXPECT_EQ(enumerate(docs, end, std::nullopt, 3, verifier), std::tuple(verifier, std::nullopt));
  EXPECT_EQ(enumerate(docs, end, allAttributes, 1, verifier), std::tuple(verifier, std::nullopt));
  EXPECT_EQ(end->offered(), 0u);
}

TEST_F(VolumePacking, aCookieBeyondTheEndIsStale) {
  source->put("me/Docs/a", "x");
  const std::uint64_t verifier = std::get<0>(enumerate(docs, packer));
  const auto end = std::make_shared<RecordingPacker>();
  EXPECT_EQ(enumerate(docs, end, std::nullopt, 4, verifier), std::tuple(0u, staleCookie));
  EXPECT_EQ(enumerate(docs, end, allAttributes, 2, verifier), std::tuple(0u, staleCookie));
  EXPECT_EQ(enumerate(docs, end, allAttributes, ~std::uint64_t{0}, verifier),
            std::tuple(0u, staleCookie));
  EXPECT_EQ(end->offered(), 0u);
}

TEST_F(VolumePacking, aCookieIsStaleOnceTheDirectoryChanged) {
  source->put("me/Docs/a", "x");
  source->put("me/Docs/b", "x");
  const std::uint64_t verifier = std::get<0>(enumerate(docs, packer));
  source->put("me/Docs/new", "x");
  const auto resumed = std::make_shared<RecordingPacker>();
  EXPECT_EQ(enumerate(docs, resumed, std::nullopt, 3, verifier), std::tuple(0u, staleCookie));
  EXPECT_EQ(resumed->offered(), 0u);
}

TEST_F(VolumePacking, aCookieWithoutItsVerifierIsStale) {
  source->put("me/Docs/a", "x");
  EXPECT_EQ(enumerate(docs, packer, std::nullopt, 1, 0), std::tuple(0u, staleCookie));
}

TEST_F(VolumePacking, theFirstCookieNeverLooksAtTheVerifier) {
  source->put("me/Docs/a", "x");
  const auto [verifier, error] = enumerate(docs, packer, std::nullopt, 0, 12345);
  EXPECT_EQ(error, std::nullopt);
  EXPECT_NE(verifier, 12345u);
  EXPECT_EQ(packer->names(), (Names{".", "..", "a"}));
}

TEST_F(VolumePacking, aChangeOfSizesAloneKeepsTheCookieGood) {
  source->put("me/Docs/a", "x");
  const std::uint64_t verifier = std::get<0>(enumerate(docs, packer));
  source->put("me/Docs/a", "longer");
  const auto resumed = std::make_shared<RecordingPacker>();
  EXPECT_EQ(enumerate(docs, resumed, std::nullopt, 2, verifier),
            std::tuple(verifier, std::nullopt));
  EXPECT_EQ(resumed->names(), Names{"a"});
}

TEST_F(VolumePacking, everyCallListsTheDirectoryAgain) {
  (void)enumerate(docs, packer);
  (void)enumerate(docs, packer, std::nullopt, 2, emptyVerifier);
  EXPECT_EQ(source->calls(Call::Kind::list).size(), 2u);
}

}  // namespace
}  // namespace tarnel::test
