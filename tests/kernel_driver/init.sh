#!/bin/sh
# The first process of the kernel that scripts/test-kernel boots.

mount -t devtmpfs devtmpfs /dev
exec </dev/ttyS0 >/dev/ttyS0 2>&1
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t tmpfs -o size=80% tmpfs /tmp
mkdir /tmp/bsp

for module in mtd bch nandcore nand; do
    insmod "/lib/modules/$module.ko"
done
/bin/kernel_driver_test || dmesg
poweroff -f
