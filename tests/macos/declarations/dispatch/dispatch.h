#pragma once

#include <stdint.h>

#include "../Marks.h"

// Signatures: pyobjc. Types and ownership: Apple's sources. In Objective-C++ a queue is an object that ARC
// looks after; in plain C++ it is a pointer that is retained and released by hand. The two mangle
// differently, so that a header that both languages include must not name the type.

#if defined(__OBJC__)
#include <objc/NSObject.h>
@protocol OS_dispatch_object <NSObject>
@end
@protocol OS_dispatch_queue <OS_dispatch_object>
@end
typedef NSObject<OS_dispatch_object>* dispatch_object_t;
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
typedef NSObject<OS_dispatch_object>* dispatch_queue_attr_t;
#else
typedef struct dispatch_object_s {
  private:
    dispatch_object_s();
    ~dispatch_object_s();
    dispatch_object_s(const dispatch_object_s&);
    void operator=(const dispatch_object_s&);
} * dispatch_object_t;
typedef struct dispatch_queue_s : public dispatch_object_s{} * dispatch_queue_t;
typedef struct dispatch_queue_attr_s : public dispatch_object_s{} * dispatch_queue_attr_t;

MACOS_EXTERN void dispatch_retain(dispatch_object_t object);
MACOS_EXTERN void dispatch_release(dispatch_object_t object);
MACOS_EXTERN struct dispatch_queue_s _dispatch_main_q;
static inline dispatch_queue_t dispatch_get_main_queue(void) {
    return &_dispatch_main_q;
}
#endif

typedef uint64_t dispatch_time_t;
typedef void (*dispatch_function_t)(void* context);

#define DISPATCH_TIME_NOW (0ull)
#define DISPATCH_QUEUE_SERIAL NULL

MACOS_EXTERN NS_RETURNS_RETAINED dispatch_queue_t dispatch_queue_create(const char* label,
                                                                        dispatch_queue_attr_t attr);
MACOS_EXTERN void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
MACOS_EXTERN void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context,
                                   dispatch_function_t work);
MACOS_EXTERN dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta);
