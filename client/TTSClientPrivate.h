// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_TTSCLIENTPRIVATE_H
#define VOXTREL_CLIENT_TTSCLIENTPRIVATE_H

#include <cstdint>
#include <string>

#include "ipc/BinderHeaders.h"
#include "ipc/Callback.h"
#include "ipc/ITextToSpeechFestival.h"
#include "profile/TtsSetting.h"
#include "vocabulary/Capabilities.h"
#include "vocabulary/GlobalConfig.h"
#include "vocabulary/Language.h"

namespace TTS {

/// An application's connection to the speech service.
///
/// Construct, `connect`, any operations, `disconnect`, destroy. All client objects of one process
/// share one service proxy (`gttsbinder`), one callback object (`m_cb`) and one registration under
/// the process id. Constructing or destroying *any* client object empties `gttsbinder`: every
/// client object of the process then answers -5 until one of them connects again.
///
/// Results are the status codes of vocabulary/Status.h unless said otherwise; other non-zero values
/// come from the service. An operation first logs its trace (level 2), then checks in the order in
/// which its comment lists the refusals, and only then asks the service. *No service* stands for
/// -5 with an empty `gttsbinder`. *Lock rule*: unless this client holds the service lock, the
/// service is asked whether it is locked, and a locked service gives -7.
///
/// Values behind `void*` are read and written by address, as the type that the comment names; they
/// need no alignment. A null address where a value is needed is refused with -3 and nothing is read
/// or written; where the trace shows the value, none is logged then.
///
/// Called on: one application thread at a time; docs/threading.md says what else must take turns,
/// and which races remain. Locks: `Clientmutex` in `getService` and `connect`, nothing elsewhere.
/// The notification function is called on binder threads for the service's events, and inside the
/// setters, on their thread, for local changes: there it may call the client again, but not
/// `connect` or `getService`, whose mutex may be held by a thread that waits for the service.
/// Events and death notices arrive only when the process runs binder threads
/// (`ProcessState::self()->startThreadPool()`).
///
/// A client must not outlive the shared objects. A client at namespace scope does where the library
/// is linked statically: docs/threading.md says why, and what to do instead.
///
/// The data members are open to the wrapper that an application's own library puts around this
/// class, and to diagnostics; change them only through the operations.
class TTSClientPrivate {
public:
    /// An application's notification function.
    using NotifyFunction = void (*)(unsigned int, unsigned int, unsigned int);

    /// Releases the process's callback object when the binder under it dies.
    class CbDeathNotifier : public android::IBinder::DeathRecipient {
    public:
        ~CbDeathNotifier() override;

        /// Prints one line to standard output and empties `m_cb`.
        /// Called on: a binder thread. Locks: none.
        void binderDied(const android::wp<android::IBinder>& who) override;
    };

    // --- Connection ---------------------------------------------------------------------------

    /// Makes a client that is not connected, and empties `gttsbinder`.
    ///
    /// @param appName the application's name in log lines, and the base name of its profile
    ///        "/Customer/" + appName + ".ini".
    /// @param cb receives events; null when the application wants none.
    TTSClientPrivate(const std::string& appName, NotifyFunction cb);

    /// Empties `gttsbinder`. The callback stays registered: `disconnect` first.
    ~TTSClientPrivate();

    TTSClientPrivate(const TTSClientPrivate&) = delete;
    TTSClientPrivate& operator=(const TTSClientPrivate&) = delete;

    /// Finds and joins the service, and asks to be admitted.
    ///
    /// When the process is connected already, `getService` does nothing; the answer is then that of
    /// this object's own last fetch of the capabilities, so an object that never joined by itself
    /// gets -10. After `disconnect` the service is still known and nothing is registered anew: only
    /// a new client object joins again.
    ///
    /// @return 0; -8 when the service was not found; -10 when it does not admit this client, with
    ///         the connection and the registration left as they are.
    /// Blocks for up to 15 s of search and 60 s of waiting for the service to become ready.
    int connect();

    /// Finds the service and registers the notification function, unless `gttsbinder` is set.
    ///
    /// The search asks the service manager 31 times, 0.5 s apart. Once found, the service's death
    /// is watched, a new callback object replaces the process's old one, and the capabilities are
    /// fetched up to 1201 times, 50 ms apart, until they are ready; if they never are, the last
    /// ones fetched are used.
    ///
    /// @return `gttsbinder` itself; empty when the service was not found. Reading it after the call
    ///         is unlocked, as in every operation.
    /// Called on: any thread. Locks: `Clientmutex` for the whole run, both waits included.
    android::sp<ITextToSpeechFestival>& getService();

    /// Withdraws the registration, and releases the death link, then the callback object.
    ///
    /// `gttsbinder` stays set. No service: -5, and nothing changes.
    /// @return the service's answer.
    int disconnect();

    // --- Speech -------------------------------------------------------------------------------

    /// Speaks `text` with the client's current settings.
    ///
    /// Refuses: no service -5; speech disabled -1; lock rule -7. The request is one-way, so 0 means
    /// that it was sent, and it is 0 as well where the runtime could not send it.
    /// @param id passed through; names the utterance in the service's events.
    /// @param text passed through whole, whatever its length. A device's runtime takes 520,192
    ///        bytes in a one-way request, 40 of them for what is not text, and holds no more than
    ///        that of all requests which the service has not taken yet. What is beyond is lost: the
    ///        result is 0, nothing is spoken, and no event comes. Give a longer text in pieces of
    ///        some sentences, and wait for the events of earlier ones before more are sent.
    int say(unsigned int id, const std::string& text);

    /// Queues a pause. Refuses as `say`. Both arguments are passed through, with the client's
    /// current background volume.
    int silence(unsigned int first, unsigned int second);

    /// Stops speech and drops what is queued. Refuses as `say`. The argument is passed through.
    int stopAndFlush(unsigned int arg);

    /// Switches speech on or off. Refuses: no service -5; lock rule -7.
    int setEnable(bool enable);

    /// Whether speech is switched on; false without a service. Logs nothing.
    bool enabled();

    /// Sets the service's verbosity. Refuses: no service -5; lock rule -7.
    int setVerbosity(int verb);

    /// The service's verbosity; 0 without a service. Logs nothing.
    int verbosity();

    /// Sets the service-wide speech rate.
    ///
    /// Refuses: no service -5; a rate outside `speedMin()` to `speedMax()`, or any rate when the
    /// service has no speed control, is logged and answered with **0**; lock rule -7.
    int setGlobalRate(unsigned int rate);

    /// The service-wide speech rate; 0 without a service. Logs nothing.
    int globalRate();

    /// Asks for the service lock. Refuses: no service -5.
    ///
    /// @return the service's answer; 0 or 1 makes this client the lock's owner, any other value
    ///         makes it not the owner.
    int lock();

    /// Gives the service lock back. Refuses: no service -5.
    ///
    /// @return the service's answer; 0 or 1 ends the ownership, any other value leaves it.
    int unlock();

    /// 1 when this client holds the lock, or without a service; else the service's answer, 0 or 1.
    /// Logs nothing.
    int locked();

    // --- Prosody and volume -------------------------------------------------------------------
    //
    // The setters change this client's own settings, which travel with each `say`; the service only
    // answers whether the feature is switched on. Each refuses: value outside its range -3 (logged;
    // 65535, "not set", is always inside, and NaN is not outside); the result of `enabled2` for the
    // feature's flag, -5 without a service; flag off or capability missing -9 (logged). A value
    // equal to the current one gives 0 and nothing more; a new one is stored and the notification
    // function is called with (EVENT_SETTING, 0, SettingKind). A refusal changes nothing.

    int setSpeed(void* value);      ///< `uint32_t`, `speedMin()` to `speedMax()`
    int setPitch(void* value);      ///< `float`, `pitchMin()` to `pitchMax()`
    int setVolume(void* value);     ///< `float`, `volumeMin()` to `volumeMax()`
    int setBgVolume(void* value);   ///< `uint32_t`, 0 to 100
    int setTtsVolume(void* value);  ///< `uint32_t`, 0 to 100

    // Copies of the client's current values: 0, or -3 for a null address. No trace, no service.
    // Like the range queries below they are not `const`, so that wrappers can keep setters and
    // getters in one table of member pointers; their symbols are part of the binary interface.

    int speed(void* out);      ///< `uint32_t`
    int pitch(void* out);      ///< `float`
    int volume(void* out);     ///< `float`
    int bgvolume(void* out);   ///< `uint32_t`
    int ttsvolume(void* out);  ///< `uint32_t`
    int voice(void* out);      ///< `uint32_t`

    /// Writes exactly `len` bytes to `out`: the first `len` of the language code, and zeros after
    /// its end. A `len` up to the length of the code therefore gives no terminator.
    int language(void* out, unsigned int len);

    // Whether a feature exists and is switched on. False without a log line when `enabled2` fails;
    // false with one (level 1) when the flag is off or the capability missing.

    bool isSpeedSupported();
    bool isPitchSupported();
    bool isVolumeSupported();
    bool isBgVolumeSupported();
    bool isTtsVolumeSupported();

    // Ranges as the service last told them; the volumes' 0 to 100 are fixed. No trace, no service.

    unsigned int speedMin();
    unsigned int speedMax();
    float pitchMin();
    float pitchMax();
    float volumeMin();
    float volumeMax();
    unsigned int bgVolumeMin();
    unsigned int bgVolumeMax();
    unsigned int ttsVolumeMin();
    unsigned int ttsVolumeMax();

    // --- Global configuration -----------------------------------------------------------------

    /// Checks a service-wide value and forwards it. Nothing of this client changes.
    ///
    /// Refuses: no service -5; the key's own checks; lock rule -7. The key's own checks, in order,
    /// after -3 for a null `value` of a key with a number:
    /// - `GCONF_SPEED`, `GCONF_PITCH`, `GCONF_VOLUME`, `GCONF_BG_VOLUME`, `GCONF_TTS_VOLUME`: out
    ///   of range -3 (65535 has no exception here; NaN passes); the result of `enabled2`; flag off
    ///   or capability missing -9.
    /// - `GCONF_VOICE`: a failure of `globalConfig(GCONF_LANGUAGE)` as it is; then, unless the
    ///   service's language is none of ours: above the number of voices -3; the result of
    ///   `enabled2`; flag off or no voices -9; refused by the device's filter -9.
    /// - `GCONF_LANGUAGE`: not a language that the service speaks -9; refused by the filter -9.
    ///   `value` is the NUL-terminated code itself; null throws `std::logic_error`.
    /// - every other key: none.
    int setGlobalConfig(VOXTRELAPI_GCONF key, void* value);

    /// Reads a service-wide value into `out`. Refuses: no service -5; null `out` -3. For
    /// `GCONF_LANGUAGE`, `out` is a zero-filled buffer of 16 characters; the code is copied without
    /// a terminator.
    int globalConfig(VOXTRELAPI_GCONF key, void* out);

    /// Switches a feature on or off for everybody. Refuses: no service -5; lock rule -7.
    int setEnable2(VOXTRELAPI_GCONF key, bool enable);

    /// Reads a feature's flag into the `bool` at `out`. Refuses: no service -5; null `out` -3.
    int enabled2(VOXTRELAPI_GCONF key, void* out);

    // --- Languages and voices -----------------------------------------------------------------
    //
    // The device's filter is the text `INI_LANGUAGE_WITH_VOICES`: items "code.voice" joined by ",".
    // "code.none" takes the language away; any other item restricts the language to the voices so
    // listed. A null text is an empty one, and an empty one filters nothing.
    //
    // The *current language* is the client's own, or, while it has none, the service's global one.

    /// Looks a voice up in the filter.
    ///
    /// @param voice points to a `VoiceInfo`; all 64 bytes of its name count when none is NUL. Null
    ///        is no voice: 0, not listed, and no log line.
    /// @param listed set to whether an item names exactly this voice; false for an empty filter.
    ///        May be null.
    /// @return 1 when the filter has an item for the voice's language, else 0. The voice is usable
    ///         when the result is 0 or `*listed` is true.
    int supportVoiceByFilter(void* voice, bool* listed);

    /// 1 when the filter takes the whole language away, else 0.
    int languageByFilter(EN_VOXTREL_LANGUAGE lang);

    /// The codes of the languages that the service speaks and the filter leaves, in id order,
    /// joined by ",". Made once for a client object, again while it is empty.
    std::string supportLanguages();

    /// Lists the usable voices of the current language, two at most.
    ///
    /// @param out receives a `VoiceInfo**`: an array of pointers ended by null, or null when there
    ///        is no voice or on failure. The array and its records belong to the process and are
    ///        overwritten by the next call of any client object.
    ///        A service without any voice leaves the array alone.
    /// @return 0; the failure of `globalConfig`; -3 when the service's language is none of ours.
    /// Called on: one thread of the process at a time.
    int supportVoicesInfo(void* out);

    /// Sets the client's own language; the service is not asked.
    ///
    /// Refuses: a language that the service does not speak -9; refused by the filter -9 (both
    /// logged). A code that is none of ours passes both and means "no language". The code that is
    /// set already gives 0 and nothing more; a new one also resets the voice, to 65535 for no
    /// language and to 0 otherwise, and notifies (EVENT_SETTING, 0, SETTING_LANGUAGE).
    /// @param code a NUL-terminated code.
    int setLanguage(void* code);

    /// Sets the client's own voice.
    ///
    /// Refuses: no language of its own -11; above the language's number of voices -3; the result
    /// of `enabled2`; flag off or no voices -9; refused by the filter -9 (not logged). The voice
    /// that is set already gives 0 and nothing more; a new one notifies (EVENT_SETTING, 0,
    /// SETTING_VOICE).
    /// @param voice a `uint32_t`; voices are counted from 1.
    int setVoice(void* voice);

    /// 1 when the current language has voices; 0 when it has none or is unknown.
    int ttsVoiceMin();

    /// How many voices the current language has; 0 when it is unknown.
    int ttsVoiceMax();

    /// 1 when a voice may be chosen for the current language, else 0.
    int supportVoicesNum();

    /// Length of the client's own language code.
    int getLangPropertyLen();

    // --- Profiles -----------------------------------------------------------------------------

    /// Writes the client's settings to a profile: 0, or -6 when it cannot be opened.
    /// @param name a full path, verbatim; null for "/Customer/" + application name + ".ini".
    int saveProfile(const char* name);

    /// Reads the client's settings from a profile: 0, or -6, with nothing changed, when it cannot
    /// be opened. The service is not told.
    /// @param name as for `saveProfile`. `mProfileName` becomes the path that was read, the
    ///        default path for null.
    int loadProfile(const char* name);

    /// Asks the service to reset itself; the client's own settings and files stay. Refuses: no
    /// service -5; lock rule -7.
    /// @param name not used.
    int factoryReset(const char* name);

    // --- Data ---------------------------------------------------------------------------------

    NotifyFunction mCbFunc;           ///< null when the application wants no events
    uint32_t mPid;                    ///< process id at construction; the service's name for us
    std::string mAppName;             ///< application name in log lines
    bool mLockOwner;                  ///< this client holds the service lock
    Capabilities mCapabilities;       ///< as last fetched by this object's `getService`
    std::string mSupportedLanguages;  ///< what `supportLanguages` made
    TtsSetting mSetting;              ///< the current values, and their profile
    std::string mProfileName;         ///< profile last loaded, "Default" before

    /// The process's one callback object; empty before a connection and after `disconnect`.
    static android::sp<Callback> m_cb;
    /// Linked to the binder of `m_cb` by `connect`.
    static android::sp<CbDeathNotifier> mCbDeathNotifier;
};

}  // namespace TTS

#endif
