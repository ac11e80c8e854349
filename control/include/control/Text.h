// The two rules for texts, in one place. All texts are UTF-8.
//
// textEqual, textLess: Unicode canonical equivalence. Both sides are taken in their composed form
// (NFC, Unicode Standard Annex 15) and compared code point by code point; for valid UTF-8 that is
// byte order. Records and payloads compare with textEqual, listings are ordered with textLess.
// Keys (ids, live items, sets of names) are compared as exact bytes instead: two names that differ
// only in composition are two files on Linux. Such code uses std::string's own == on purpose.
//
// A text that is not valid UTF-8 has no composed form and is compared by its bytes.
// Threads: pure functions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnel {

[[nodiscard]] bool isAscii(std::string_view text);

// RFC 3629: no overlong forms, no surrogates, nothing past U+10FFFF.
[[nodiscard]] bool isValidUtf8(std::string_view text);

// The text with one U+FFFD for each maximal part of a sequence that could have been one (Unicode
// Standard, 3.9), so that a message from a peer can always be shown.
[[nodiscard]] std::string repairedUtf8(std::string_view text);

// The composed form (NFC); the text itself when it is ASCII or not valid UTF-8.
[[nodiscard]] std::string composed(std::string_view text);

// The text as a file system that ignores case reads it: full case folding, characters that have no
// appearance left out, decomposed with its marks in no particular order. For comparing with texts
// in lower-case ASCII. The text itself when it is not valid UTF-8.
[[nodiscard]] std::string caseFolded(std::string_view text);

[[nodiscard]] bool textEqual(std::string_view a, std::string_view b);
[[nodiscard]] bool textLess(std::string_view a, std::string_view b);

// Sorts by the key of each element; those of equal keys keep their order. The keys are sorted and
// not the elements, which are moved once each.
template <class T, class KeyOf>
void sortByKey(std::vector<T>& elements, KeyOf keyOf) {
  std::vector<std::pair<decltype(keyOf(elements.front())), std::size_t>> order;
  order.reserve(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) order.emplace_back(keyOf(elements[i]), i);
  std::sort(order.begin(), order.end());  // the index makes equal keys keep their order
  std::vector<T> sorted;
  sorted.reserve(elements.size());
  for (const auto& [key, index] : order) sorted.push_back(std::move(elements[index]));
  elements = std::move(sorted);
}

// Stable sort by textLess of nameOf(element), a reference to a text inside the element. Each name
// is composed at most once; the common case, names in ASCII, is sorted without any copy of a name.
template <class T, class NameOf>
void sortByText(std::vector<T>& elements, NameOf nameOf) {
  const bool ascii = std::all_of(elements.begin(), elements.end(),
                                 [&](const T& element) { return isAscii(nameOf(element)); });
  if (ascii) {
    sortByKey(elements, [&](const T& element) { return std::string_view(nameOf(element)); });
  } else {
    sortByKey(elements, [&](const T& element) { return composed(nameOf(element)); });
  }
}

}  // namespace tarnel
