"""Computes the dial's arithmetic anew, for every point with whole coordinates in its square, and compares.

    dial_sweep_test.py PROGRAM

PROGRAM prints what the dial gives (see DialDump.cpp). Here every operation is done with 200 bits and then rounded to
the precision that the dial keeps the result in, so that nothing depends on a C library. Each point where the two
differ is listed, and none is allowed.
"""
import struct
import subprocess
import sys

from mpmath import mp, mpf

SINGLE, DOUBLE = 24, 53  # bits of precision

mp.prec = 200


def rounded(value, bits):
    with mp.workprec(bits):
        return +value


def single(value):
    return rounded(mpf(value), SINGLE)


def double(value):
    return rounded(mpf(value), DOUBLE)


PI = mpf(3.141592653589793)  # the double, not the number
SCALE = mpf(3.41)


def angle_of(x, y):
    """Degrees as a single, or None where they are not a number."""
    dx, dy = single(double(x - 817)), single(double(y - 539))
    square_x, square_y = single(dx * dx), single(dy * dy)
    r = single(mp.sqrt(single(square_x + square_y)))
    square_r = single(r * r)
    numerator = single(single(square_r + square_x) - square_y)
    denominator = single(single(2 * r) * dx)
    if denominator == 0:
        assert numerator == 0
        return None
    cosine = single(numerator / denominator)
    if abs(cosine) > 1:
        return None
    angle = single(double(single(180 * single(mp.acos(cosine))) / PI))
    return single(360 - angle) if dx != 0 and dy < 0 else angle


def offset_at(angle):
    radians = double(double(angle * PI) / 180)
    return (single(double(66 * double(mp.cos(radians)))), single(double(66 * double(mp.sin(radians)))))


def reading_at(angle):
    """The knob's offset and the position."""
    if angle is not None and (angle < 240 or angle > 300):
        position = angle - 300 if angle > 300 else angle + 60
        return offset_at(angle), int(single(double(double(position) * SCALE)))
    if angle is not None and angle < 270:
        return offset_at(mpf(240)), 1023
    return offset_at(mpf(300)), 0


def bits_of(value):
    packed = struct.pack(">f", float(value))
    assert struct.unpack(">f", packed)[0] == value
    return packed.hex()


def expected_press(x, y):
    (a, b), position = reading_at(angle_of(x, y))
    return " ".join([
        "press", str(x), str(y), str(position),
        str(int(single(817 + a))), str(int(single(539 + b))),
        bits_of(single(a + 806)), bits_of(single(b + 528)),
        "ff0696%02x%02xfe" % divmod(position, 256)])


def main():
    lines = subprocess.run([sys.argv[1]], check=True, capture_output=True, text=True).stdout.splitlines()
    points = [(x, y) for x in range(718, 917) for y in range(440, 639)]
    presses = [line for line in lines if line.startswith("press ")]
    angles = [line.split() for line in lines if line.startswith("angle ")]
    assert len(points) == len(presses) == 199 * 199, len(presses)
    assert [int(words[1]) for words in angles] == list(range(1024))

    differing = 0
    for (x, y), found in zip(points, presses):
        expected = expected_press(x, y)
        if found != expected:
            differing += 1
            print(f"found    {found}\nexpected {expected}")
    for _, position, bits in angles:
        angle = mpf(struct.unpack(">f", bytes.fromhex(bits))[0])
        if reading_at(angle)[1] != int(position):
            differing += 1
            print(f"position {position} has the angle {angle}, which stands for {reading_at(angle)[1]}")
    print(f"{len(presses)} points and {len(angles)} positions, {differing} differ")
    sys.exit(1 if differing else 0)


if __name__ == "__main__":
    main()
