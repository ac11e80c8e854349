#include <string.h>

#import "Scenarios.h"

void readsFillTheBufferChunkByChunk(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  enum { size = 600000, chunk = 262144 };
  char* const bytes = malloc(size);
  for (int i = 0; i < size; ++i) bytes[i] = (char)('a' + i % 23);
  hostFile(host, "me/Docs/big", bytes, size);
  FSItem* const big = itemAt(volume, @"me/Docs/big");
  FSMutableFileDataBuffer* const buffer = bufferOf(size);
  Call* const all = readBytes(volume, big, 0, size, buffer);
  expectSuccess(all);
  EXPECT(all->number == size);
  EXPECT(memcmp([buffer mutableBytes], bytes, size) == 0);
  EXPECT(hostAsked(host, "read", "me/Docs/big") == 3);
  hostLimitChunks(host, 100000);
  FSMutableFileDataBuffer* const again = bufferOf(size);
  Call* const inPieces = readBytes(volume, big, 1, size, again);
  expectSuccess(inPieces);
  EXPECT(inPieces->number == size - 1);
  EXPECT(memcmp([again mutableBytes], bytes + 1, size - 1) == 0);
  EXPECT(((const char*)[again mutableBytes])[size - 1] == '~');
  free(bytes);
}

void readsEndWhereTheFileAndTheBufferEnd(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  FSMutableFileDataBuffer* const buffer = bufferOf(64);
  Call* const whole = readBytes(volume, file, 0, 64, buffer);
  expectSuccess(whole);
  EXPECT(whole->number == 5 && [[buffer first:6] isEqualToString:@"hello~"]);
  Call* const past = readBytes(volume, file, 5, 64, bufferOf(64));
  expectSuccess(past);
  EXPECT(past->number == 0);
  FSMutableFileDataBuffer* const small = bufferOf(3);
  Call* const part = readBytes(volume, file, 1, SIZE_MAX, small);
  expectSuccess(part);
  EXPECT(part->number == 3 && [[small first:4] isEqualToString:@"ell~"]);
  const size_t asked = hostAsked(host, "read", "me/Docs/a.txt");
  Call* const nothing = readBytes(volume, file, 0, 0, bufferOf(8));
  EXPECT([nothing hasCome]);
  expectSuccess(nothing);
  expectSuccess(readBytes(volume, file, 0, 8, bufferOf(0)));
  EXPECT(hostAsked(host, "read", "me/Docs/a.txt") == asked);
}

void badReadsAreRefused(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  expectPosixError(readBytes(volume, file, -1, 8, bufferOf(8)), 22);
  expectPosixError(readBytes(volume, activate(volume)->first, 0, 8, bufferOf(8)), 21);
  expectPosixError(readBytes(volume, itemAt(volume, @"me"), 0, 8, bufferOf(8)), 21);
  expectPosixError(readBytes(volume, itemAt(volume, @"me/Docs"), 0, 8, bufferOf(8)), 21);
  hostRemove(host, "me/Docs/a.txt");
  expectPosixError(readBytes(volume, file, 0, 8, bufferOf(8)), 2);
}
