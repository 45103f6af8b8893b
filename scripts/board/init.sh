#!/bin/busybox sh
# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=dash
# The first process of an emulated board: makes it a system, runs /board/list and turns it off.
/bin/busybox --install -s /bin
export PATH=/bin:/sbin HOME=/root LC_ALL=C.UTF-8 TERM=dumb VOXTREL_TESTS_RUN_SLOWLY=1

mount -t devtmpfs devtmpfs /dev
exec </dev/console >/dev/console 2>&1
mkdir -p /dev/pts /dev/shm
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devpts devpts /dev/pts
mount -t tmpfs -o mode=1777 tmpfs /dev/shm
ip link set lo up
dmesg -n 1 # messages of the kernel would tear the programs' lines; parts.sh prints them at the end

. /board/parts.sh
add_module binder_linux devices=binder,rawbinder
chmod 666 /dev/binder /dev/rawbinder
part kernel 0 uname -srm
. /board/list
part dmesg 10 dmesg
echo "#board off"
poweroff -f
