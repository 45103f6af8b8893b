#!/usr/bin/env bash
# usage: exported_symbols.sh SHARED_OBJECT
# What the shared object exports is the TTS namespace and the platform templates made for it; nothing
# of the C++ library, whose copies would bind applications to our compiler.
set -euo pipefail
symbols=$(nm --dynamic --defined-only --demangle "$1")
for wanted in 'TTS::TTSClientPrivate::connect()' 'TTS::TTSClientPrivate::say(' \
    'TTS::langId2Str' 'TTS::langStr2Id' 'TTS::gttsbinder' 'TTS::gDeathNotifier' \
    'TTS::Clientmutex' 'TTS::TTSClientPrivate::m_cb' 'TTS::BnTextToSpeechFestival::onTransact(' \
    'vtable for TTS::BnTextToSpeechFestival' 'typeinfo for TTS::ITextToSpeechFestival' \
    'TTS::ITextToSpeechFestival::asInterface(' 'TTS::ICallback::asInterface(' \
    'TTS::TtsSetting::serialize('; do
    grep -qF "$wanted" <<<"$symbols" || { echo "not exported: $wanted"; exit 1; }
done
foreign=$(grep -vE ' (TTS::|(vtable|VTT|typeinfo|typeinfo name|construction vtable|guard variable|(non-)?virtual thunk) (for|to) (TTS::|android::)|android::(BnInterface|BpInterface|BinderService|sp|wp)<TTS::|(android::sp<TTS::[A-Za-z:]+> )?TTS::|VOXTREL_)' <<<"$symbols" || true)
if [ -n "$foreign" ]; then
    echo "exported, but not ours:"
    echo "$foreign"
    exit 1
fi
