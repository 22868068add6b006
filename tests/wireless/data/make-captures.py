#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
# Writes the small synthetic captures the replay tests read (run it here after a change):
#   office.pcap   radiotap beacons of three BSSIDs over 8 s, each signal telling which frame
#   lab.capture.pcap  one plain 802.11 beacon (no radio header), WPA2, channel 11
#   ethernet.pcap, data.pcap  captures without any beacon
#   broken.pcap   a hostile SSID, elements cut or running past the end, a header too short
#   far-future.pcapng  one beacon stamped 2^64-1 us after 1970 (pcapng stamps are 64 bits wide)
import struct

T0 = 1700000000 * 1000000  # capture time of the first frame, microseconds


def pcap(name, link, packets):
    with open(name, 'wb') as f:
        f.write(struct.pack('<IHHiIII', 0xa1b2c3d4, 2, 4, 0, 0, 65535, link))
        for t, p in packets:
            f.write(struct.pack('<IIII', t // 1000000, t % 1000000, len(p), len(p)) + p)


def pcapng(name, link, packets):  # one section, one interface, microsecond stamps
    with open(name, 'wb') as f:
        f.write(struct.pack('<IIIHHqI', 0x0a0d0d0a, 28, 0x1a2b3c4d, 1, 0, -1, 28))
        f.write(struct.pack('<IIHHII', 1, 20, link, 0, 65535, 20))
        for t, p in packets:
            pad = -len(p) % 4
            size = 32 + len(p) + pad
            f.write(struct.pack('<7I', 6, size, 0, t >> 32, t & 0xffffffff, len(p), len(p)) + p +
                    b'\0' * pad + struct.pack('<I', size))


def beacon(bssid=1, ssid=b'net', channel=6, privacy=False, rsn=False, extra=b''):
    address = bytes([2, 0, 0, 0, 0, bssid])
    f = bytes([0x80, 0, 0, 0]) + b'\xff' * 6 + address + address + b'\0\0'
    f += b'\0' * 8 + bytes([100, 0, 0x11 if privacy else 0x01, 0])
    f += bytes([0, len(ssid)]) + ssid + bytes.fromhex('0108 82848b960c121824')
    f += bytes([3, 1, channel])
    if rsn:
        f += bytes.fromhex('30140100000fac040100000fac040100000fac020000')
    return f + extra


def radiotap(mhz, signal):  # channel and antenna signal
    return struct.pack('<BBHIHHb', 0, 0, 13, 0x28, mhz, 0, signal)


frames = [(0.0, 1, -41), (0.5, 2, -52), (1.2, 1, -43), (1.9, 3, -63),
          (2.1, 1, -44), (7.5, 2, -55), (7.9, 2, -56)]
pcap('office.pcap', 127, [(T0 + round(at * 1e6), radiotap(2437, s) + beacon(b))
                          for at, b, s in frames])
pcap('lab.capture.pcap', 105, [(T0, beacon(channel=11, privacy=True, rsn=True))])
pcap('ethernet.pcap', 1, [(T0, b'\x01' * 60)])
pcap('data.pcap', 105, [(T0, bytes.fromhex('08000000') + b'\0' * 40)])
hostile = b'a\tb\n<c>\xff\0'
pcap('broken.pcap', 127, [
    (T0, radiotap(5180, -70) + beacon(ssid=hostile, extra=bytes.fromhex('30050100000f'))),
    (T0 + 1, radiotap(5180, -71) + beacon(2, ssid=hostile, extra=bytes.fromhex('3d40'))),
    (T0 + 2, bytes.fromhex('0000'))])
pcapng('far-future.pcapng', 105, [(2**64 - 1, beacon())])
