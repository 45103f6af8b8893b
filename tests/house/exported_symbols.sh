#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: exported_symbols.sh SHARED_OBJECT
# What the shared object exports is what its installed headers declare, with the type information of its
# classes and of the platform's templates made for them; none of the library's own helpers, and nothing
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
classes='(Bn|Bp|I)(Callback|TextToSpeechFestival)|Callback|DeathNotifier|Mutex|TTSClientPrivate(::CbDeathNotifier)?|TtsSetting'
member="TTS::($classes)::~?[A-Za-z0-9]+(\[abi:cxx11\])?\(.*|TTS::(TTSClientPrivate|ICallback|ITextToSpeechFestival)::(m_cb|mCbDeathNotifier|descriptor)"
free='TTS::(langId2Str(\[abi:cxx11\])?|langStr2Id)\(.*|TTS::(gttsbinder|gDeathNotifier|Clientmutex)'
types="(vtable|VTT|typeinfo|typeinfo name) for TTS::($classes)|typeinfo( name)? for android::(BnInterface|BpInterface|BinderService)<TTS::($classes)>"
foreign=$(sed -E 's/^[0-9a-f]* +. //; s/@@VOXTREL_1$//' <<<"$symbols" |
    grep -vE "^($member|$free|$types|(non-)?virtual thunk to ($member)|VOXTREL_1)\$" || true)
if [ -n "$foreign" ]; then
    echo "exported, but not ours:"
    echo "$foreign"
    exit 1
fi
