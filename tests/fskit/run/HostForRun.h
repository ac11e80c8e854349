// The scripted host, as C: a small tree served over a real socket in a home of its own.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostForRun HostForRun;

HostForRun* hostMake(void);
// False when the host was asked something that it did not expect.
bool hostFree(HostForRun* host);
const char* hostHome(const HostForRun* host);

void hostFile(HostForRun* host, const char* path, const char* bytes, size_t length);
void hostRemove(HostForRun* host, const char* path);
void hostLimitChunks(HostForRun* host, size_t bytes);
// From now on this question is never answered. op: "stat", "list" or "read".
void hostStall(HostForRun* host, const char* op, const char* path);
// The next answers to these wait for hostRelease, and are the usual ones then.
void hostDelayList(HostForRun* host, const char* path, const char* child);
void hostDelayRead(HostForRun* host, const char* path, const char* base64);
void hostRelease(HostForRun* host);
// From now on this question is refused with this message.
void hostRefuse(HostForRun* host, const char* op, const char* path, const char* message);
void hostAnswerAsUsual(HostForRun* host);
size_t hostAsked(const HostForRun* host, const char* op, const char* path);
// With a bound.
bool hostWaitUntilAsked(const HostForRun* host, const char* op, const char* path, size_t times);

#ifdef __cplusplus
}
#endif
