/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Speaks through the service: the interface of <voxtrel/Client.h> for C, from C89 on.
 *
 * Every function returns a status, VX_OK or a negative number, and gives its values through
 * pointers. These are written only where VX_OK is returned. None throws, aborts or prints; where a
 * handle, or a pointer that is not said to be optional, is null, the function does nothing and
 * returns VX_BAD_PARAMETER. A handle that has been freed must not be used again.
 *
 * Texts are UTF-8 and end with a zero byte; the library copies what it is given. Texts that it
 * gives are static where nothing else is said, and never freed by the caller. What a ..._new
 * function or a function with a handle's handle gives belongs to the caller, who ends it with the
 * ..._free function of its type.
 *
 * Called on: any thread, event handlers included; where a type is for one thread at a time, it is
 * said there. A thread must not be cancelled (pthread_cancel) inside a function. No call waits
 * longer than its deadline, whatever the service or the service manager does; the functions without
 * one do not wait for either, but for vx_client_free. vx_on_event waits for an earlier handler that
 * runs, and vx_dispatch runs one.
 *
 * A process that is forked off one that has had a client can have none: it starts a program of its
 * own (exec), and lets the handles of its parent be.
 */
#ifndef VOXTREL_VOXTREL_H
#define VOXTREL_VOXTREL_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Status ---------------------------------------------------------------------------------- */

/*
 * Why something was not done. Values from -1 to -99 are the service's own and may include numbers
 * that have no name here; the others are this library's.
 */
typedef int vx_status;

enum {
    VX_OK = 0,
    VX_DISABLED = -1,           /* speech is switched off for everybody */
    VX_BAD_PARAMETER = -3,      /* a null pointer, a value out of range, a text that is not UTF-8 */
    VX_NO_SERVICE = -5,         /* the service died, or there is no connection to it */
    VX_PROFILE_ERROR = -6,      /* a profile could not be read or written */
    VX_LOCKED = -7,             /* another process holds the service's lock */
    VX_SERVICE_NOT_FOUND = -8,  /* no service is registered */
    VX_NOT_SUPPORTED = -9,      /* the service has no such language, voice or setting */
    VX_PERMISSION_DENIED = -10, /* the service does not let this user do that */
    VX_NO_LANGUAGE = -11,       /* a voice was named without a language */
    VX_QUEUE_FULL = -12,        /* too much is waiting at the service */
    VX_AUDIO_FAILED = -13,      /* the engine or the audio output failed */
    VX_SHUTDOWN = -14,          /* the service was ended by its owner */

    VX_TIMED_OUT = -100,    /* no answer before the deadline; it may still be done */
    VX_UNRESPONSIVE = -101, /* an earlier request is still not answered, so nothing was tried */
    VX_LOST = -102,         /* the request was lost on its way, or the event about it */
    VX_CLOSED = -103,       /* the client ended */

    VX_NO_MEMORY = -200, /* memory or threads ran out; nothing was done */
    VX_NO_EVENT = -201,  /* nothing has happened since the last event */
    VX_NOT_SET = -202,   /* the value that was asked for is not set */
    VX_FAILED = -203     /* something else; vx_last_error tells what */
};

/* What a status means and what to do about it: one line of English without a line end. */
vx_status vx_describe(vx_status status, const char** text);

/*
 * Why the last call on this thread that failed did so, in more detail than its status: one line of
 * English; empty before the first. Valid until the next call on this thread that fails.
 */
vx_status vx_last_error(const char** text);

/* ---- Time ------------------------------------------------------------------------------------ */

/*
 * Deadlines are in milliseconds from the call on, from 0. VX_CLIENT_DEADLINE means the client's own
 * (vx_client_options_set_deadline). Only the functions that wait for speech take VX_FOREVER. Any
 * other negative number is VX_BAD_PARAMETER.
 */
enum { VX_FOREVER = -1, VX_CLIENT_DEADLINE = -2 };

/* ---- Outcomes -------------------------------------------------------------------------------- */

enum {
    VX_OUTCOME_PENDING = 0,  /* it waits, or is being spoken */
    VX_OUTCOME_FINISHED = 1, /* spoken to its end */
    VX_OUTCOME_STOPPED = 2,  /* somebody wanted silence */
    VX_OUTCOME_REFUSED = 3,  /* nothing of it is spoken; `status` says why */
    /* the service died or was ended, never got it, or refused the rest of it after it had begun;
       `status` says which */
    VX_OUTCOME_LOST = 4
};

/* Who stopped it, as far as it is known. */
enum {
    VX_BY_NOBODY = 0,
    VX_BY_THIS_CLIENT = 1,  /* vx_stop or vx_stop_everybody of the client that said it */
    VX_BY_THIS_PROCESS = 2, /* vx_stop_everybody of another client of this process */
    VX_BY_SOMEBODY = 3      /* another process */
};

/* What became of an utterance. A plain value. */
typedef struct vx_outcome {
    int kind; /* VX_OUTCOME_PENDING, VX_OUTCOME_FINISHED, VX_OUTCOME_STOPPED, VX_OUTCOME_REFUSED,
                 VX_OUTCOME_LOST */
    vx_status status;
    int stopper;         /* VX_BY_... */
    int heard;           /* 1: a part of it has been heard; of a finished one, all of it */
    const char* message; /* one line of English, with what to do; static, never null */
    void* reserved[4];   /* null */
} vx_outcome;

/* A place in the text that was given to vx_say. */
typedef struct vx_position {
    size_t bytes;
    size_t characters; /* code points */
} vx_position;

/* ---- How to speak ---------------------------------------------------------------------------- */

/*
 * What is not set is as the client's own (vx_set_defaults), and what is not set there is as the
 * service's. Used on one thread at a time.
 */
typedef struct vx_options vx_options;

/* What to do when the service dies, is ended, or never gets an utterance. */
enum {
    VX_REPORT = 0,            /* its outcome is VX_OUTCOME_LOST */
    VX_SAY_AGAIN = 1,         /* said once more if nothing of it has been heard */
    VX_SAY_AGAIN_WHATEVER = 2 /* said once more from its beginning, also if a part has been heard */
};

/* Nothing is set. */
vx_status vx_options_new(vx_options** options);
vx_status vx_options_free(vx_options* options);

/*
 * What the service does not have is found out when something is said: the utterance is
 * VX_OUTCOME_REFUSED. VX_BAD_PARAMETER: a number that is not finite, or an `on_loss` that has no
 * name.
 */
vx_status vx_options_set_language(vx_options* options,
                                  const char* tag);                     /* "fr", "fr-FR", "fr_FR" */
vx_status vx_options_set_voice(vx_options* options, const char* voice); /* a name, or its number */
vx_status vx_options_set_speed(vx_options* options, unsigned int speed); /* vx_features_speed */
vx_status vx_options_set_pitch(vx_options* options, float pitch);        /* vx_features_pitch */
vx_status vx_options_set_volume(vx_options* options, float volume);      /* vx_features_volume */
vx_status vx_options_set_speech_volume(vx_options* options, unsigned int percent);
vx_status vx_options_set_media_volume(vx_options* options, unsigned int percent);
vx_status vx_options_set_on_loss(vx_options* options, int on_loss); /* VX_REPORT... */

/* VX_NOT_SET where nothing is set. Texts are valid until the option is set again or freed. */
vx_status vx_options_get_language(const vx_options* options, const char** tag);
vx_status vx_options_get_voice(const vx_options* options, const char** voice);
vx_status vx_options_get_speed(const vx_options* options, unsigned int* speed);
vx_status vx_options_get_pitch(const vx_options* options, float* pitch);
vx_status vx_options_get_volume(const vx_options* options, float* volume);
vx_status vx_options_get_speech_volume(const vx_options* options, unsigned int* percent);
vx_status vx_options_get_media_volume(const vx_options* options, unsigned int* percent);
vx_status vx_options_get_on_loss(const vx_options* options, int* on_loss);

/* ---- Clients --------------------------------------------------------------------------------- */

typedef struct vx_client vx_client;

/* Used on one thread at a time, and by no client after vx_client_new. */
typedef struct vx_client_options vx_client_options;

/* The thread on which a client's events arrive. */
enum {
    VX_THREAD_OF_LIBRARY = 0, /* one for all clients of the process that choose it */
    /* the one that calls vx_next_event or vx_dispatch; events are kept in memory until it does */
    VX_THREAD_OF_APPLICATION = 1
};

/* A deadline of 2000 ms, a linger of 2000 ms, VX_THREAD_OF_LIBRARY. */
vx_status vx_client_options_new(vx_client_options** options);
vx_status vx_client_options_free(vx_client_options* options);

/* How long a call may wait for the service, where VX_CLIENT_DEADLINE is given to it; from 0. */
vx_status vx_client_options_set_deadline(vx_client_options* options, int milliseconds);

/*
 * How long vx_client_free may wait until the service has what was said; from 0. Not waited for are
 * the end of the speech, and a service that is not there. The last client of the process then
 * waits for its deadline at most to leave the service.
 */
vx_status vx_client_options_set_linger(vx_client_options* options, int milliseconds);
vx_status vx_client_options_set_handler_thread(vx_client_options* options, int thread);

/*
 * From the first of these on, a service is talked to, and told what is to be said, only if it is
 * this user's own, root's, or that of a user whose number was given: with root's, 0, alone no other
 * is. Without one: anybody's.
 * Without effect on a device, whose service manager does not tell whose a service is. The options
 * of the client that begins the connection of the process count.
 */
vx_status vx_client_options_trust_user(vx_client_options* options, unsigned int user);

/*
 * Returns at once. The client finds the service by itself, and again after each death; what is said
 * meanwhile waits. Clients of one process share one connection, two threads, and the lock, and do
 * not know of each other otherwise.
 *
 * name: what the application is called; nobody is told, and nothing depends on it. Optional, as
 * `options` is.
 */
vx_status vx_client_new(const char* name, const vx_client_options* options, vx_client** client);

/*
 * Utterances without an outcome get one: VX_OUTCOME_LOST, VX_CLOSED. What the service already has
 * is spoken all the same. May be called inside the client's own handler; else it returns only when
 * no handler of the client runs. No other call on the client may be under way. Utterances and locks
 * that the client gave are freed on their own, before or after.
 */
vx_status vx_client_free(vx_client* client);

vx_status vx_is_connected(vx_client* client, int* connected);

/* VX_OK once there is a service, else why there is none. */
vx_status vx_wait_until_connected(vx_client* client, int deadline_ms);

/* How far a client gets on its way to the service. */
enum {
    VX_REACH_NO_MANAGER = 0,            /* there is no service manager */
    VX_REACH_MANAGER_NOT_PERMITTED = 1, /* this user may not talk to it */
    VX_REACH_MANAGER_SILENT = 2,        /* it does not answer */
    VX_REACH_NO_SERVICE = 3,            /* no service is registered */
    VX_REACH_NOT_TRUSTED = 4,           /* another user's: vx_client_options_trust_user */
    VX_REACH_SERVICE_SILENT = 5,        /* it is registered and does not answer */
    VX_REACH_LOADING = 6,               /* it answers and is loading its voices */
    VX_REACH_NOT_ADMITTED = 7,          /* it does not let this user in, or has too many clients */
    VX_REACH_CONNECTED = 8
};

/*
 * What a client sees on its way to the service. Does not change; its texts are valid until it is
 * freed.
 */
typedef struct vx_diagnosis vx_diagnosis;

/* Who stands at the other end, as far as the system tells. A plain value. */
typedef struct vx_peer {
    unsigned int process; /* 0: not known */
    int user_known;       /* 1: `user` is */
    unsigned int user;    /* the number of the user that started it; else 0 */
    int stopped;          /* 1: the process is stopped, as by SIGSTOP or a debugger */
    void* reserved[4];    /* null */
} vx_peer;

/*
 * Looks how far the way to the service goes, and what is in the way. Says so as soon as it is
 * known, and at once where there is no service manager; while nobody answers it waits a moment, and
 * no longer than the deadline.
 */
vx_status vx_diagnose(vx_client* client, int deadline_ms, vx_diagnosis** diagnosis);
vx_status vx_diagnosis_free(vx_diagnosis* diagnosis);
vx_status vx_diagnosis_reach(const vx_diagnosis* diagnosis, int* reach); /* VX_REACH_... */

/*
 * why: the status of there being no connection; VX_OK when there is one. text: one line of English
 * with path, process and what to do; empty when there is one.
 */
vx_status vx_diagnosis_why_not(const vx_diagnosis* diagnosis, vx_status* why, const char** text);

/* "socket", or "driver": the device's own; empty for a service that stands in for tests. */
vx_status vx_diagnosis_transport(const vx_diagnosis* diagnosis, const char** transport);

/* Where the service manager is looked for; empty: not a file. */
vx_status vx_diagnosis_path(const vx_diagnosis* diagnosis, const char** path);

/* errno of the attempt to get there; 0: none, or not known. */
vx_status vx_diagnosis_error(const vx_diagnosis* diagnosis, int* error);
vx_status vx_diagnosis_manager(const vx_diagnosis* diagnosis, vx_peer* manager);
vx_status vx_diagnosis_service(const vx_diagnosis* diagnosis, vx_peer* service);

/*
 * takes: 1 when the service has begun a pause of 49 days, which it must refuse at once
 * (docs/writing-a-service.md). It was told to drop it again, and with it what was said. Else 0.
 */
vx_status vx_diagnosis_takes_any_pause(const vx_diagnosis* diagnosis, int* takes);

/* What vx_say uses where its options are not set. */
vx_status vx_set_defaults(vx_client* client, const vx_options* options);

/* A copy, the caller's own. */
vx_status vx_get_defaults(vx_client* client, vx_options** options);

/* ---- Speech ---------------------------------------------------------------------------------- */

/* A handle on what a client said. It may outlive the client, which decides its outcome. */
typedef struct vx_utterance vx_utterance;

/*
 * Speaks a text after what was said before; never waits. A text that begins with "<speak" is marked
 * up (SSML) where the service understands it.
 *
 * A text of any length is spoken; it is held in memory until then. One that is marked up may have
 * 262144 bytes. An utterance that cannot be spoken has VX_OK here and becomes VX_OUTCOME_REFUSED:
 * at once if the text is not UTF-8 or an option is no language or number, and else when the service
 * is known.
 *
 * options and utterance are optional; without the latter there is no handle to free.
 */
vx_status vx_say(vx_client* client, const char* text, const vx_options* options,
                 vx_utterance** utterance);

/*
 * Silence among what is said, of 0 ms or more. A service may refuse one that is longer than a
 * minute, as voxtreld does (VX_BAD_PARAMETER). utterance is optional.
 */
vx_status vx_pause(vx_client* client, int milliseconds, vx_utterance** utterance);

/* Ends what this client said; never waits. The outcomes come as the service tells them. */
vx_status vx_stop(vx_client* client);

/*
 * Ends what anybody said. VX_LOST: the request was lost on its way, as far as that can be seen:
 * what this process said goes on.
 */
vx_status vx_stop_everybody(vx_client* client, int deadline_ms);

/*
 * Ends what another process of this user said, which may have ended since. Not every service lets
 * it. VX_PERMISSION_DENIED: it is not this user's, or the service has nothing of it.
 */
vx_status vx_stop_process(vx_client* client, unsigned int process, int deadline_ms);

/*
 * Waits until the service has everything that this client said, and has told what it refuses: what
 * has no outcome then is being spoken or waits at the service for its turn. Of a long text that may
 * be as late as it takes to speak all but the last 64 KiB.
 */
vx_status vx_wait_until_taken(vx_client* client, int deadline_ms);

/* Waits until every utterance of this client has an outcome. timeout_ms: from 0, or VX_FOREVER. */
vx_status vx_wait_for_all(vx_client* client, int timeout_ms);

/* Counted from 1 in its client; events carry it. */
vx_status vx_utterance_number(const vx_utterance* utterance, unsigned long* number);

/* The outcome; its kind is VX_OUTCOME_PENDING while there is none. */
vx_status vx_utterance_outcome(const vx_utterance* utterance, vx_outcome* outcome);

/*
 * Waits for the outcome. timeout_ms: from 0, or VX_FOREVER. VX_TIMED_OUT when there is none in
 * time. Inside a handler it holds up the handlers of the same thread, not the outcome. outcome is
 * optional.
 */
vx_status vx_utterance_wait(const vx_utterance* utterance, int timeout_ms, vx_outcome* outcome);

/* Where the word begins that is being spoken; 0 before the first. */
vx_status vx_utterance_position(const vx_utterance* utterance, vx_position* position);

/* Lets go of the handle; what was said is spoken all the same. */
vx_status vx_utterance_free(vx_utterance* utterance);

/* ---- Events ---------------------------------------------------------------------------------- */

enum {
    VX_EVENT_STARTED = 0,      /* `utterance` begins to sound */
    VX_EVENT_WORD = 1,         /* a word of it begins, at `position` */
    VX_EVENT_MARK = 2,         /* the mark with the number `value` in its text was reached */
    VX_EVENT_ENDED = 3,        /* `utterance` has its `outcome`; the one such event about it */
    VX_EVENT_CONNECTED = 4,    /* the service is there */
    VX_EVENT_DISCONNECTED = 5, /* it is not any more, and is being looked for */
    VX_EVENT_CHANGED = 6       /* something that all clients share: `setting` is now `value` */
};

/* What VX_EVENT_CHANGED tells of; another service may tell of more, by numbers of its own. */
enum {
    VX_CHANGED_SPEECH = 0, /* 1: switched on */
    VX_CHANGED_VERBOSITY = 1,
    VX_CHANGED_SPEED = 2,
    VX_CHANGED_SPEED_SWITCH = 3,
    VX_CHANGED_PITCH = 4,
    VX_CHANGED_PITCH_SWITCH = 5,
    VX_CHANGED_VOICE = 6,
    VX_CHANGED_VOICE_SWITCH = 7,
    VX_CHANGED_VOLUME = 8,
    VX_CHANGED_VOLUME_SWITCH = 9,
    VX_CHANGED_MEDIA_VOLUME = 10,
    VX_CHANGED_MEDIA_VOLUME_SWITCH = 11,
    VX_CHANGED_SPEECH_VOLUME = 12,
    VX_CHANGED_SPEECH_VOLUME_SWITCH = 13,
    VX_CHANGED_LANGUAGE = 14,
    VX_CHANGED_LOCK = 15,  /* process id of the holder, 0: free */
    VX_CHANGED_READY = 16, /* 1: the voices are loaded */
    VX_CHANGED_RESET = 17  /* all settings went back to their defaults */
};

/* Something that happened. A plain value; other kinds may come, and are best ignored. */
typedef struct vx_event {
    int kind;                /* VX_EVENT_... */
    unsigned long utterance; /* its number in the client: STARTED, WORD, MARK, ENDED; else 0 */
    vx_position position;    /* WORD, MARK */
    vx_outcome outcome;      /* ENDED */
    unsigned long setting;   /* CHANGED: VX_CHANGED_... */
    unsigned long value;     /* numbers as their whole part */
    void* reserved[8];       /* null */
} vx_event;

/* `event` is valid until the handler returns; `user` is what vx_on_event was given. */
typedef void (*vx_handler)(const vx_event* event, void* user);

/*
 * Calls `handler` with `user` for what happens from now on, and for what an earlier one has not
 * been called for yet; that has returned then, unless it is the caller. Null: none. `user` is
 * optional and never looked at.
 *
 * With VX_THREAD_OF_LIBRARY it runs on the library's thread. With VX_THREAD_OF_APPLICATION it runs
 * in vx_dispatch.
 */
vx_status vx_on_event(vx_client* client, vx_handler handler, void* user);

/*
 * A descriptor that is readable while there are events; for poll and its like. It is the client's,
 * until that is freed, and must not be read, written or closed. VX_BAD_PARAMETER without
 * VX_THREAD_OF_APPLICATION.
 */
vx_status vx_client_fd(vx_client* client, int* fd);

/*
 * Takes the next event; never waits. VX_NO_EVENT: there is none. VX_BAD_PARAMETER without
 * VX_THREAD_OF_APPLICATION. Of several threads, each event reaches one.
 */
vx_status vx_next_event(vx_client* client, vx_event* event);

/*
 * Calls the handler for all that has happened, on this thread; events are dropped while there is
 * none. count: how many events there were; optional. VX_BAD_PARAMETER without
 * VX_THREAD_OF_APPLICATION.
 */
vx_status vx_dispatch(vx_client* client, size_t* count);

/*
 * Asks the service for an event, and waits until it has told it: a service that does not will tell
 * of nothing else either. VX_TIMED_OUT: not yet; the next call waits on.
 */
vx_status vx_check_events(vx_client* client, int deadline_ms);

/* ---- What the service can do ----------------------------------------------------------------- */

/* Does not change; its texts are valid until it is freed. */
typedef struct vx_features vx_features;

typedef struct vx_voice {
    const char* name;
    const char* language; /* as a tag, "fr-FR" */
    unsigned int number;  /* from 1 in its language */
    void* reserved[4];    /* null */
} vx_voice;

vx_status vx_get_features(vx_client* client, int deadline_ms, vx_features** features);
vx_status vx_features_free(vx_features* features);

/* The least and the greatest value; VX_NOT_SUPPORTED: the service cannot do it. */
vx_status vx_features_speed(const vx_features* features, unsigned int* least, unsigned int* most);
vx_status vx_features_pitch(const vx_features* features, float* least, float* most);
vx_status vx_features_volume(const vx_features* features, float* least, float* most);

/* Counted from 0; VX_BAD_PARAMETER: there are not so many. */
vx_status vx_features_language_count(const vx_features* features, size_t* count);
vx_status vx_features_language(const vx_features* features, size_t index, const char** tag);
vx_status vx_features_voice_count(const vx_features* features, size_t* count);
vx_status vx_features_voice(const vx_features* features, size_t index, vx_voice* voice);

/* The service's, kept from applications on this device. */
vx_status vx_features_filtered_language_count(const vx_features* features, size_t* count);
vx_status vx_features_filtered_language(const vx_features* features, size_t index,
                                        const char** tag);
vx_status vx_features_filtered_voice_count(const vx_features* features, size_t* count);
vx_status vx_features_filtered_voice(const vx_features* features, size_t index, vx_voice* voice);

/* ---- What all clients share ------------------------------------------------------------------ */

/* Settings that the service keeps for all its clients. Used on one thread at a time. */
typedef struct vx_settings vx_settings;

/* Nothing is set. */
vx_status vx_settings_new(vx_settings** settings);
vx_status vx_settings_free(vx_settings* settings);

/* VX_BAD_PARAMETER: a number that is not finite. What the service refuses, vx_change_settings
 * tells. */
vx_status vx_settings_set_language(vx_settings* settings, const char* tag);  /* "fr-FR" */
vx_status vx_settings_set_voice(vx_settings* settings, unsigned int number); /* in the language */
vx_status vx_settings_set_speed(vx_settings* settings, unsigned int speed);
vx_status vx_settings_set_rate(vx_settings* settings,
                               unsigned int rate); /* of most services the speed */
vx_status vx_settings_set_pitch(vx_settings* settings, float pitch);
vx_status vx_settings_set_volume(vx_settings* settings, float volume);
vx_status vx_settings_set_speech_volume(vx_settings* settings, unsigned int percent);
vx_status vx_settings_set_media_volume(vx_settings* settings, unsigned int percent);
vx_status vx_settings_set_verbosity(vx_settings* settings,
                                    int verbosity); /* 1: punctuation spoken */

/* VX_NOT_SET where nothing is set. Texts are valid until the setting is set again or freed. */
vx_status vx_settings_get_language(const vx_settings* settings, const char** tag);
vx_status vx_settings_get_voice(const vx_settings* settings, unsigned int* number);
vx_status vx_settings_get_speed(const vx_settings* settings, unsigned int* speed);
vx_status vx_settings_get_rate(const vx_settings* settings, unsigned int* rate);
vx_status vx_settings_get_pitch(const vx_settings* settings, float* pitch);
vx_status vx_settings_get_volume(const vx_settings* settings, float* volume);
vx_status vx_settings_get_speech_volume(const vx_settings* settings, unsigned int* percent);
vx_status vx_settings_get_media_volume(const vx_settings* settings, unsigned int* percent);
vx_status vx_settings_get_verbosity(const vx_settings* settings, int* verbosity);

/* Those that the service tells; the others are not set. */
vx_status vx_get_settings(vx_client* client, int deadline_ms, vx_settings** settings);

/* Changes those that are set, one after the other, and ends with the first that is refused.
 * VX_LOST: one got lost on its way; those behind it may be changed all the same, and
 * vx_get_settings tells which. */
vx_status vx_change_settings(vx_client* client, const vx_settings* settings, int deadline_ms);

/* Puts the settings of the service back to what it was delivered with. */
vx_status vx_reset_settings(vx_client* client, int deadline_ms);

/* Switches of the service; one that is off keeps clients from settings of their own there. */
enum {
    VX_SWITCH_SPEECH = 0, /* off: nothing is spoken */
    VX_SWITCH_SPEED = 1,
    VX_SWITCH_PITCH = 2,
    VX_SWITCH_VOICE = 3,
    VX_SWITCH_VOLUME = 4,
    VX_SWITCH_MEDIA_VOLUME = 5,
    VX_SWITCH_SPEECH_VOLUME = 6
};

/* on: 1 or 0. */
vx_status vx_is_on(vx_client* client, int which, int deadline_ms, int* on);

/* on: 0, or any other number. */
vx_status vx_turn(vx_client* client, int which, int on, int deadline_ms);

/*
 * Holds the service's lock until it is freed: nobody else can speak or change settings meanwhile.
 * Used on one thread at a time.
 */
typedef struct vx_lock vx_lock;

/* Takes the lock. A process has it once. */
vx_status vx_take_lock(vx_client* client, int deadline_ms, vx_lock** lock);

/* held: 0 once the service that gave it has died, or the lock was broken; else 1. */
vx_status vx_lock_is_held(const vx_lock* lock, int* held);

/* Gives the lock back. */
vx_status vx_lock_free(vx_lock* lock);

/* Who has the service's lock. */
enum {
    VX_LOCK_FREE = 0,
    VX_LOCK_HELD_BY_THIS_PROCESS = 1,
    VX_LOCK_HELD_BY_ANOTHER = 2,
    VX_LOCK_UNKNOWN = 3 /* the service does not tell, or not this user */
};

vx_status vx_lock_state(vx_client* client, int deadline_ms, int* state);

/*
 * Frees the lock, whoever has it, if this user may. process: that had it, or 0: nobody; optional.
 * VX_LOCKED: another client of this process has it.
 */
vx_status vx_break_lock(vx_client* client, int deadline_ms, unsigned int* process);

/* ---- Profiles -------------------------------------------------------------------------------- */

/*
 * Writes the defaults of this client into a profile (docs/profile-format.md). What was there stays
 * as it is unless all could be written. Volume and pitch become whole numbers, which the format
 * has; a voice is written as its number, so that one named otherwise needs a connection. What to do
 * on loss is not kept. VX_PROFILE_ERROR, or VX_BAD_PARAMETER for what a profile cannot hold.
 */
vx_status vx_save_profile(vx_client* client, const char* path);

/*
 * Reads them from there, but for what to do on loss, which stays. What the profile leaves unset, or
 * what is no language, is not set afterwards. VX_PROFILE_ERROR: nothing has changed.
 */
vx_status vx_load_profile(vx_client* client, const char* path);

/* A profile of settings as its file has it, switches included. Used on one thread at a time. */
typedef struct vx_profile vx_profile;

/* What a device's service may find in a profile about its output; read, never written. */
typedef struct vx_profile_output {
    int sample_rate; /* Hz */
    int channels;
    int mixer_path;
    int long_break_duration;
    int short_break_duration;
    void* reserved[4]; /* null */
} vx_profile_output;

/* It sets nothing, and every switch is on. */
vx_status vx_profile_new(vx_profile** profile);
vx_status vx_profile_free(vx_profile* profile);

/*
 * Where a device keeps the profile of that name: "/Customer/" name ".ini", for which strlen(name) +
 * 15 bytes are enough. VX_BAD_PARAMETER: it needs more than `size`.
 */
vx_status vx_profile_path_of(const char* name, char* path, size_t size);

/* Reads a file, and changes nothing there. VX_PROFILE_ERROR: vx_last_error tells why. */
vx_status vx_profile_read(const char* path, vx_profile** profile);

/*
 * Puts the profile in place of the file, whole or not at all. Volume and pitch become whole
 * numbers, which the format has; a rate it has not, and leaves out. VX_PROFILE_ERROR, with the
 * system's reason in vx_last_error, or VX_BAD_PARAMETER for what a profile cannot hold.
 */
vx_status vx_profile_write(const vx_profile* profile, const char* path);

/* Those that the profile sets; a copy, the caller's own. */
vx_status vx_profile_get_settings(const vx_profile* profile, vx_settings** settings);

/* Copies them, in place of all that the profile has set. */
vx_status vx_profile_set_settings(vx_profile* profile, const vx_settings* settings);

/* on: 1 or 0. */
vx_status vx_profile_is_on(const vx_profile* profile, int which, int* on);

/* on: 0, or any other number. */
vx_status vx_profile_turn(vx_profile* profile, int which, int on);
vx_status vx_profile_get_output(const vx_profile* profile, vx_profile_output* output);

#ifdef __cplusplus
}
#endif

#endif
