// One source under both ways of counting references: ARC, which is how the extension is built, and
// by hand, for a runtime without it. Blocks are kept and dropped through these alone: to a runtime
// without ARC they are no objects.
#pragma once

#import <Foundation/Foundation.h>

#if __has_feature(objc_arc)
// A block as a context of the C surface, and back, exactly once.
#define TARNEL_KEEP_BLOCK(block) ((__bridge_retained void*)[(block) copy])
#define TARNEL_TAKE_BLOCK(type, context) ((__bridge_transfer type)(context))
#define TARNEL_DROP_BLOCK(block) ((void)0)
// An object as a context that lends, and back.
#define TARNEL_LEND(object) ((__bridge void*)(object))
#define TARNEL_LENT(type, context) ((__bridge type)(context))
#define TARNEL_RETAINED(object) (object)
#define TARNEL_RELEASE(object) ((void)0)
#define TARNEL_AUTORELEASED(object) (object)
#define TARNEL_SUPER_DEALLOC() ((void)0)
#else
#include <Block.h>
#define TARNEL_KEEP_BLOCK(block) ((void*)Block_copy(block))
#define TARNEL_TAKE_BLOCK(type, context) ((type)(context))
#define TARNEL_DROP_BLOCK(block) Block_release(block)
#define TARNEL_LEND(object) ((void*)(object))
#define TARNEL_LENT(type, context) ((type)(context))
#define TARNEL_RETAINED(object) [(object) retain]
#define TARNEL_RELEASE(object) [(object) release]
#define TARNEL_AUTORELEASED(object) [(object) autorelease]
#define TARNEL_SUPER_DEALLOC() [super dealloc]
#endif

// A reply that must be made exactly once on every path: the compiler looks for it, also inside a
// block that is handed to a parameter which carries it too. Not inherited from a declaration.
#define TARNEL_CALLED_ONCE __attribute__((called_once))
