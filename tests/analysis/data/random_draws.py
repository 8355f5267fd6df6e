#!/usr/bin/python3
"""Prints the numbers that RandomDrawsTest.cpp expects, from whole numbers alone.

    /usr/bin/python3 random_draws.py     # Debian 12, python3 3.11.2; a second

The generator is written from its publication (D. Blackman, S. Vigna, ACM Trans. Math. Softw. 47 (2021)), and checked
against numbers of others. The state after 2^128 steps comes from squaring the step 128 times as a matrix of bits, not
from the published polynomial.
"""
MASK = 2**64 - 1


def splitmix(z):
    while True:
        z = (z + 0x9E3779B97F4A7C15) & MASK
        x = z
        x = ((x ^ (x >> 30)) * 0xBF58476D1CE4E5B9) & MASK
        x = ((x ^ (x >> 27)) * 0x94D049BB133111EB) & MASK
        yield x ^ (x >> 31)


def turned(x, k):
    return ((x << k) | (x >> (64 - k))) & MASK


def step(s):
    a, b, c, d = s
    t = (b << 17) & MASK
    c ^= a
    d ^= b
    b ^= c
    a ^= d
    return [a, b, c ^ t, turned(d, 45)]


class Draws:
    def __init__(self, seed=None, state=None, use=0):
        words = splitmix(seed) if state is None else None
        self.state = state or [next(words) for _ in range(4)]
        for _ in range(use):
            self.state = unpacked(image(JUMP, packed(self.state)))

    def word(self):
        result = (turned(self.state[1] * 5 & MASK, 7) * 9) & MASK
        self.state = step(self.state)
        return result

    def below(self, bound):
        while True:
            word = self.word()
            if word >= 2**64 % bound:
                return word % bound

    def order(self, count):
        places = list(range(count))
        for i in range(count - 1, 0, -1):
            j = self.below(i + 1)
            places[i], places[j] = places[j], places[i]
        return places


def packed(s):
    return s[0] | s[1] << 64 | s[2] << 128 | s[3] << 192


def unpacked(bits):
    return [bits >> (64 * w) & MASK for w in range(4)]


def image(columns, bits):
    result = 0
    for b in range(256):
        if bits >> b & 1:
            result ^= columns[b]
    return result


def jump():
    columns = [packed(step(unpacked(1 << b))) for b in range(256)]
    for _ in range(128):
        columns = [image(columns, column) for column in columns]
    return columns


def main():
    words = splitmix(1234567)  # rosettacode.org, Pseudo-random numbers/Splitmix64
    assert [next(words) for _ in range(3)] == [6457827717110365317, 3203168211198807973, 9817491932198370423]
    draws = Draws(state=[1, 2, 3, 4])  # tests of the Rust crate rand_xoshiro
    assert [draws.word() for _ in range(4)] == [11520, 0, 1509978240, 1215971899390074240]

    global JUMP
    JUMP = jump()
    for use in range(3):
        draws = Draws(1, use=use)
        print("seed 1, use", use, [draws.word() for _ in range(3)])
    draws = Draws(2**64 - 1)
    print("seed 2^64 - 1", [draws.word() for _ in range(3)])
    draws = Draws(7)
    print("below 10, seed 7", [draws.below(10) for _ in range(12)])
    draws = Draws(7)
    print("below 3 2^62, seed 7", [draws.below(3 * 2**62) for _ in range(8)])  # a quarter of the words is passed over
    words = Draws(7)
    passed = [words.word() for _ in range(16)]
    print("of the words", sum(word < 2**62 for word in passed[:passed.index(draws.word())]), "were passed over")
    print("order of 10, seed 1", Draws(1).order(10))


if __name__ == "__main__":
    main()
