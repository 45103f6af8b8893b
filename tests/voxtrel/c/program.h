/* SPDX-License-Identifier: Apache-2.0 */
/* What the program in C89 checks: each function returns null, or which condition does not hold. */
#ifndef VOXTREL_TESTS_VOXTREL_C_PROGRAM_H
#define VOXTREL_TESTS_VOXTREL_C_PROGRAM_H

#include "voxtrel/testing/fake.h"

#ifdef __cplusplus
extern "C" {
#endif

#define STRING_OF(text) #text
#define LINE_OF(line) STRING_OF(line)
#define REQUIRE(condition)                                                 \
    do {                                                                   \
        if (!(condition)) {                                                \
            return __FILE__ ":" LINE_OF(__LINE__) ": not so: " #condition; \
        }                                                                  \
    } while (0)

/* A client of `fake`; null if there is none. */
vx_client* client_of(vx_fake* fake, int thread);

/* nulls.c; `client` has no service. */
const char* null_handles_are_bad_parameters(void);
const char* null_pointers_are_bad_parameters(vx_client* client, vx_utterance* utterance);

/* values.c */
const char* options_keep_what_is_set(void);
const char* settings_keep_what_is_set(void);
const char* wrong_values_are_bad_parameters(vx_client* client, vx_utterance* utterance);
const char* failures_are_told_in_words(vx_client* client);
const char* defaults_are_copies(vx_client* client);

/* speech.c */
const char* utterances_tell_what_became_of_them(void);
const char* requests_fail_without_a_service(vx_client* client);
const char* service_is_asked_what_it_can_do(void);
const char* settings_of_the_service_change(void);
const char* lock_is_held_until_it_is_freed(void);
const char* what_is_said_is_in_the_hands_of_the_service(void);
const char* fake_service_does_what_it_is_told(void);

/* profiles.c */
const char* profile_keeps_the_defaults(const char* path);
const char* profile_is_read_whole(const char* path);
const char* profile_is_changed_and_written(const char* path, const char* copy);
const char* profile_that_cannot_be_is_refused(const char* path, const char* nowhere);
const char* profile_of_the_device_has_its_place(void);

/* diagnosis.c; `client` finds nothing at `socket`, for the reason `error`. */
const char* missing_manager_is_diagnosed(vx_client* client, const char* socket, int error);
const char* connection_is_diagnosed(void);

/* events.c */
const char* events_come_one_by_one(void);
const char* loop_polls_and_takes(void);
const char* handler_has_its_user_pointer(void);
const char* handler_runs_in_dispatch(void);
const char* handler_may_free_its_client(void);
const char* dispatched_handler_may_free_its_client(void);
const char* no_handler_is_called_any_more(void);

#ifdef __cplusplus
}
#endif

#endif
