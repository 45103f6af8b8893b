// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_THREADANNOTATIONS_H
#define VOXTREL_CLIENT_THREADANNOTATIONS_H

// clang checks these with -Wthread-safety; every other compiler sees nothing.
#if defined(__clang__)
#define VOXTREL_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define VOXTREL_THREAD_ATTRIBUTE(attribute)
#endif

#define VOXTREL_CAPABILITY(name) VOXTREL_THREAD_ATTRIBUTE(capability(name))
#define VOXTREL_SCOPED_CAPABILITY VOXTREL_THREAD_ATTRIBUTE(scoped_lockable)
#define VOXTREL_ACQUIRE(...) VOXTREL_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define VOXTREL_RELEASE(...) VOXTREL_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define VOXTREL_REQUIRES(...) VOXTREL_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
/// For the bodies that lock the bare pthread mutex, which carries no annotation of its own.
#define VOXTREL_NO_THREAD_ANALYSIS VOXTREL_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#endif
