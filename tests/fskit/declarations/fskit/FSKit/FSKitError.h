#pragma once

#import <FSKit/FSKitDefines.h>

NS_ASSUME_NONNULL_BEGIN

FOUNDATION_EXPORT NSErrorDomain const FSKitErrorDomain FSKIT_API_AVAILABILITY_V1;

typedef NS_ERROR_ENUM(FSKitErrorDomain, FSErrorCode){
    FSErrorModuleLoadFailed = 4500,          FSErrorResourceUnrecognized = 4501,
    FSErrorResourceDamaged = 4502,           FSErrorResourceUnusable = 4503,
    FSErrorStatusOperationInProgress = 4504, FSErrorStatusOperationPaused = 4505,
    FSErrorInvalidDirectoryCookie = 4506,
};

FOUNDATION_EXPORT NSError* fs_errorForPOSIXError(int errorCode) FSKIT_API_AVAILABILITY_V1;

NS_ASSUME_NONNULL_END
