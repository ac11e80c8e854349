#import "Fakes.h"

static long living[fakeKinds];

void fakeMade(FakeKind kind) { __atomic_add_fetch(&living[kind], 1, __ATOMIC_SEQ_CST); }
void fakeGone(FakeKind kind) { __atomic_sub_fetch(&living[kind], 1, __ATOMIC_SEQ_CST); }
long fakeLiving(FakeKind kind) { return __atomic_load_n(&living[kind], __ATOMIC_SEQ_CST); }
