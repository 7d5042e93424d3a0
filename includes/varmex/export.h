/* How the exported functions of varmex are declared. */
#ifndef VARMEX_EXPORT_H
#define VARMEX_EXPORT_H

/* VARMEX_BUILDING is defined while the library itself is built, VARMEX_STATIC where its objects are
 * linked into a program directly. */
#if defined(VARMEX_STATIC)
#define VARMEX_EXPORT
#elif defined(_WIN32)
#if defined(VARMEX_BUILDING)
#define VARMEX_EXPORT __declspec(dllexport)
#else
#define VARMEX_EXPORT __declspec(dllimport)
#endif
#else
#define VARMEX_EXPORT __attribute__((visibility("default")))
#endif

/* The calling convention of the exported functions and of the callbacks that they take, so that a
 * client which is built with another default agrees. */
#if defined(_WIN32)
#define VARMEX_CALL __cdecl
#else
#define VARMEX_CALL
#endif

#endif
