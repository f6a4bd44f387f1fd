#pragma once

// What the declarations are marked with. The ownership marks are what the static analyser believes.

#ifdef __cplusplus
#define MACOS_EXTERN extern "C"
#else
#define MACOS_EXTERN extern
#endif

/// The version that brought it: using something newer than the deployment target is a warning, hence an
/// error.
#define MACOS_SINCE(version) __attribute__((availability(macos, introduced = version)))

#define CF_RETURNS_RETAINED __attribute__((cf_returns_retained))
#define CF_CONSUMED __attribute__((cf_consumed))
#define NS_RETURNS_RETAINED __attribute__((ns_returns_retained))

#define CF_ENUM(type, name) \
    enum name : type name;  \
    enum name : type
#define NS_ENUM(type, name) CF_ENUM(type, name)

/// In C++ the name is the plain integer type, so that flags can be joined without a cast (Apple's sources).
#define NS_OPTIONS(type, name) \
    type name;                 \
    enum __attribute__((flag_enum)) : name

#if defined(__OBJC__)
#define MACOS_BRIDGED(type) __attribute__((objc_bridge(type)))
#define MACOS_BRIDGED_MUTABLE(type) __attribute__((objc_bridge_mutable(type)))
#else
#define MACOS_BRIDGED(type)
#define MACOS_BRIDGED_MUTABLE(type)
#endif
