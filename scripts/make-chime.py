#!/usr/bin/env python3
"""Writes Daywyn's pop-out chime: two soft sine partials (a major sixth apart) with a
quick attack and a long exponential decay, 0.9 s, 22.05 kHz mono 16-bit. Run once;
the result is committed as src/ui/sounds/chime.wav."""
import math
import struct
import sys
import wave

RATE = 22050
LENGTH = 0.9


def sample(t):
    attack = min(1.0, t / 0.012)
    value = 0.0
    # The second note enters 90 ms after the first, like a small two-tone bell.
    for start, freq, gain in ((0.0, 659.25, 0.55), (0.09, 1046.5, 0.4)):
        if t >= start:
            local = t - start
            decay = math.exp(-local * 5.0)
            value += gain * decay * (math.sin(2 * math.pi * freq * local)
                                     + 0.15 * math.sin(4 * math.pi * freq * local))
    return attack * value * 0.45


def main(path):
    frames = bytearray()
    count = int(RATE * LENGTH)
    for i in range(count):
        t = i / RATE
        fade_out = min(1.0, (count - i) / (RATE * 0.05))
        frames += struct.pack('<h', int(max(-1.0, min(1.0, sample(t) * fade_out)) * 32767))
    with wave.open(path, 'wb') as out:
        out.setnchannels(1)
        out.setsampwidth(2)
        out.setframerate(RATE)
        out.writeframes(bytes(frames))


if __name__ == '__main__':
    main(sys.argv[1] if len(sys.argv) > 1 else 'src/ui/sounds/chime.wav')
