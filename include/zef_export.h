// Marks what the library exports; everything else is hidden.
#ifndef ZEF_EXPORT_H
#define ZEF_EXPORT_H

#if defined(ZEF_STATIC) || !defined(__GNUC__)
#define ZEF_API
#else
#define ZEF_API __attribute__((visibility("default")))
#endif

#endif
