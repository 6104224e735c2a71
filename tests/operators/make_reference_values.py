#!/usr/bin/env python3
"""Writes reference_values.txt: values of the real and complex functions at many points, computed with mpmath (Debian's
python3-mpmath) at 400 digits and rounded to doubles.

Each line: operator id, R or C (real or complex evaluation), argument, value; arguments and values as real and imaginary
part. Run it in this folder after changing the lists below; the file it writes is kept with the tests.
"""
import random
import mpmath as mp

mp.mp.dps = 400
random.seed(2500)

FUNCTIONS = {
    2001: mp.sin, 2002: mp.cos, 2003: mp.tan, 2004: mp.cot, 2005: mp.sec, 2006: mp.csc,
    2011: mp.asin, 2012: mp.acos, 2013: mp.atan, 2014: mp.acot, 2015: mp.asec, 2016: mp.acsc,
    2021: mp.sinh, 2022: mp.cosh, 2023: mp.tanh, 2024: mp.coth, 2025: mp.sech, 2026: mp.csch,
    2031: mp.asinh, 2032: mp.acosh, 2033: mp.atanh, 2034: mp.acoth, 2035: mp.asech, 2036: mp.acsch,
    2061: mp.log10, 2062: mp.log, 2101: mp.sqrt, 2102: mp.cbrt,
}

REAL_SIZES = [1e-300, 1e-20, 1e-9, 1e-3, 0.1, 0.3, 0.5, 0.7, 0.9, 0.999999, 1.0, 1.0000001, 1.1, 1.5, 2.0, 3.0, 5.0,
              10.0, 30.0, 100.0, 350.0, 1e5, 1e8, 1e10, 1e15, 1e200]
PART_SIZES = [1e-150, 1e-20, 1e-9, 1e-3, 0.1, 0.3, 0.6417, 0.9, 0.999999, 1.0, 1.000001, 1.1, 1.5, 2.0, 3.0, 5.0, 12.0,
              40.0, 300.0, 1e6, 1e100]
COMPLEX_POINTS = 110  # a function: half on the list of sizes in all quadrants, half scattered
LARGEST, SMALLEST = mp.mpf(10) ** 300, mp.mpf(10) ** -300


def in_range(value):
    """Whether the value has a double that is neither infinite nor imprecise."""
    return all(part == 0 or SMALLEST < abs(part) < LARGEST for part in (mp.re(value), mp.im(value)))


def value_at(function, z):
    try:
        return function(z)
    except (ValueError, ZeroDivisionError, OverflowError):
        return None


def complex_points():
    for i in range(COMPLEX_POINTS):
        if i % 2:
            yield complex(random.choice((-1, 1)) * random.choice(PART_SIZES),
                          random.choice((-1, 1)) * random.choice(PART_SIZES))
        else:
            yield complex(random.uniform(-4, 4), random.uniform(-4, 4))


def main():
    lines = []
    for identifier, function in FUNCTIONS.items():
        for x in [sign * size for size in REAL_SIZES for sign in (1, -1)]:
            value = value_at(function, mp.mpf(x))
            if value is None or mp.im(value) != 0 or not in_range(value):
                continue
            lines.append(f"{identifier} R {float(x).hex()} 0x0p+0 {float(mp.re(value)).hex()} 0x0p+0")
        for z in complex_points():
            value = value_at(function, mp.mpc(z))
            if value is None or not in_range(value):
                continue
            lines.append(f"{identifier} C {z.real.hex()} {z.imag.hex()} "
                         f"{float(mp.re(value)).hex()} {float(mp.im(value)).hex()}")
    with open("reference_values.txt", "w", encoding="ascii") as file:
        file.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
