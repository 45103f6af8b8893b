/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A service inside an application's own test: no processes, no runtime, no sound, and whatever
 * faults the test wants. It has five languages, two voices each, named "fr-FR-1" and "fr-FR-2",
 * everything switched on, and keeps the rules of a service. It speaks at once and takes no time, on
 * a thread of its own, and tells of each word; marked-up text is like any other to it.
 *
 * Called on: any thread, event handlers included. Statuses, null pointers and ownership as in
 * <voxtrel/voxtrel.h>.
 */
#ifndef VOXTREL_TESTING_FAKE_H
#define VOXTREL_TESTING_FAKE_H

#include <stddef.h>

#include "voxtrel/voxtrel.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct vx_fake vx_fake;

vx_status vx_fake_new(vx_fake** fake);

/* No client of it may be left. */
vx_status vx_fake_free(vx_fake* fake);

/* Lets the fake stand in for the service; it must outlive the clients. Null: the real service. */
vx_status vx_client_options_set_fake(vx_client_options* options, vx_fake* fake);

/* A list of texts that does not change; the texts are valid until it is freed. */
typedef struct vx_texts vx_texts;

vx_status vx_texts_count(const vx_texts* texts, size_t* count);

/* Counted from 0; VX_BAD_PARAMETER: there are not so many. */
vx_status vx_texts_get(const vx_texts* texts, size_t index, const char** text);
vx_status vx_texts_free(vx_texts* texts);

/*
 * What has been spoken to its end: texts, and "(pause N ms)" unless N is 0. A text that goes in
 * pieces is several.
 */
vx_status vx_fake_spoken(vx_fake* fake, vx_texts** texts);

/* Waits until so many have been. timeout_ms: from 0, or VX_FOREVER. VX_TIMED_OUT: they were fewer.
 */
vx_status vx_fake_wait_for_spoken(vx_fake* fake, size_t count, int timeout_ms);

/*
 * What was asked of it, one line each, in order, as `say 3 "Hello." fr-FR` or `stop own`;
 * <voxtrel/testing/FakeService.h> lists them.
 */
vx_status vx_fake_requests(vx_fake* fake, vx_texts** texts);

/* From now on speech begins, and comes to no word, until vx_fake_go_on. */
vx_status vx_fake_hold(vx_fake* fake);

/* Speaks what is held, and on as at first. */
vx_status vx_fake_go_on(vx_fake* fake);

/* Refuses the next text or pause with `why`, from -1 to -99. */
vx_status vx_fake_refuse_next(vx_fake* fake, vx_status why);

/* Never gets the next text or pause, and nobody is told. */
vx_status vx_fake_lose_next_request(vx_fake* fake);

/*
 * Does not send the next event of that kind about a text or pause. kind: VX_EVENT_STARTED,
 * VX_EVENT_WORD or VX_EVENT_ENDED.
 */
vx_status vx_fake_lose_next_event(vx_fake* fake, int kind);

/*
 * Answers nothing, and sends no events, until vx_fake_thaw: like a stopped process that has no room
 * for requests any more. Every thread that asks it something is kept until then, or until it dies.
 */
vx_status vx_fake_freeze(vx_fake* fake);
vx_status vx_fake_thaw(vx_fake* fake);

/* Takes so long for each request that has an answer; milliseconds from 0. */
vx_status vx_fake_answer_after(vx_fake* fake, int milliseconds);

/* Dies at once, also when frozen. Clients that look for it find nothing until vx_fake_come_back. */
vx_status vx_fake_die(vx_fake* fake);

/* Thaws, tells whom it cuts off that it is being ended, and dies. */
vx_status vx_fake_shut_down(vx_fake* fake);

/* Is there again, with default settings, speaking at once. */
vx_status vx_fake_come_back(vx_fake* fake);

/*
 * Another process stops everything, or takes the lock, from whom that may be, or gives it back.
 * process: its number, from 1.
 */
vx_status vx_fake_stop_by_another(vx_fake* fake);
vx_status vx_fake_lock_by_another(vx_fake* fake, unsigned int process);
vx_status vx_fake_unlock_by_another(vx_fake* fake);

#ifdef __cplusplus
}
#endif

#endif
