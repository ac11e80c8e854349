// What the adapter uses of the system's Foundation, declared for the compiler alone: nothing here
// runs. A declaration that differs from the system's makes the check worth less, so it stays small.
#pragma once

#import <Foundation/FoundationMacros.h>
#import <Foundation/NSCollections.h>
#import <Foundation/NSData.h>
#import <Foundation/NSError.h>
#import <Foundation/NSLock.h>
#import <Foundation/NSObject.h>
#import <Foundation/NSString.h>
#import <Foundation/NSURL.h>
#import <Foundation/NSUUID.h>
