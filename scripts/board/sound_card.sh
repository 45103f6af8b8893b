#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# usage: sound_card.sh add|remove. On a board: the kernel's loopback card, of one stream each way. Its end
# is that of a card that is unplugged; it comes when no program has it open any more.
set -e
case $1 in
    add)
        for module in soundcore snd snd-timer snd-pcm; do
            [ -d "/sys/module/$(echo "$module" | tr - _)" ] || insmod "/lib/modules/$module.ko"
        done
        insmod /lib/modules/snd-aloop.ko pcm_substreams=1
        ;;
    remove)
        echo snd_aloop.0 >/sys/bus/platform/drivers/snd_aloop/unbind
        rmmod snd-aloop
        ;;
esac
