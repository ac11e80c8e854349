// What a file-system extension sees of FSKit, declared for the compiler and for the test's own
// classes: classes with their members, protocols with what is required, numbers as the system has
// them. Since macOS 15.4 unless a declaration says otherwise.
#pragma once

#import <FSKit/FSContainer.h>
#import <FSKit/FSDirectory.h>
#import <FSKit/FSEntityIdentifier.h>
#import <FSKit/FSFileDataBuffer.h>
#import <FSKit/FSFileName.h>
#import <FSKit/FSItem.h>
#import <FSKit/FSKitDefines.h>
#import <FSKit/FSKitError.h>
#import <FSKit/FSProbeResult.h>
#import <FSKit/FSResource.h>
#import <FSKit/FSTaskOptions.h>
#import <FSKit/FSUnaryFileSystem.h>
#import <FSKit/FSVolume.h>
#import <FSKit/FSVolumeOperations.h>
#import <FSKit/FSVolumeTypes.h>
