#!/usr/bin/env python3
"""Synthesises the program's own short sounds beside this script: 48 kHz, 16 bits, mono. The same every time."""
import math
import random
import struct
import wave
from pathlib import Path

RATE = 48000


def envelope(t, attack, decay):
    """Rises within `attack` seconds and then dies away with the time constant `decay`."""
    return (t / attack if t < attack else 1.0) * math.exp(-max(0.0, t - attack) / decay)


def tink(t):
    """A soft tap on metal: a few inharmonic partials, the high ones gone first."""
    partials = ((2093, 0.50, 0.040), (3322, 0.28, 0.024), (5588, 0.16, 0.013), (7902, 0.06, 0.007))
    return sum(level * math.sin(2 * math.pi * pitch * t) * envelope(t, 0.0012, decay) for pitch, level, decay in partials)


def pop(t):
    """A round pop: a low tone that falls quickly in pitch."""
    low, high, fall = 180, 620, 0.018
    phase = 2 * math.pi * (low * t + (high - low) * fall * (1 - math.exp(-t / fall)))
    return 0.8 * math.sin(phase) * envelope(t, 0.0015, 0.022)


def write(name, seconds, sound):
    samples = []
    count = int(RATE * seconds)
    fade = int(RATE * 0.004)
    for i in range(count):
        value = sound(i / RATE) * min(1.0, (count - 1 - i) / fade)
        samples.append(int(max(-1.0, min(1.0, value)) * 32767 * 0.9))
    with wave.open(str(Path(__file__).with_name(name + ".wav")), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(struct.pack(f"<{count}h", *samples))


def crumple():
    """Paper being crumpled: grains of filtered noise, thick at first and sparse at the end."""
    chance = random.Random(7)
    grains = sorted(chance.uniform(0, 1) ** 1.6 * 0.30 for _ in range(34))
    state = {"low": 0.0}

    def sound(t):
        loudness = sum(math.exp(-(t - at) / 0.006) * (1 - at / 0.34) for at in grains if 0 <= t - at < 0.03)
        noise = chance.uniform(-1, 1)
        state["low"] += 0.32 * (noise - state["low"])
        return 0.42 * (noise - state["low"]) * min(1.0, loudness) * envelope(t, 0.004, 0.22)

    return sound


write("Tink", 0.16, tink)
write("Pop", 0.10, pop)
write("Trash", 0.36, crumple())
