#!/usr/bin/env python3
"""Writes reference_values.txt: values of the real and complex functions at many points, computed with mpmath (Debian's
python3-mpmath) at 400 digits and rounded to doubles.

Each line: operator id, R or C (real or complex evaluation), operands, value; complex numbers as real and imaginary
part. Run it in this folder after changing the lists below; the file it writes is kept with the tests.
"""
import itertools
import random
import mpmath as mp

mp.mp.dps = 400
random.seed(2500)

FUNCTIONS = {
    1801: mp.arg,
    2001: mp.sin, 2002: mp.cos, 2003: mp.tan, 2004: mp.cot, 2005: mp.sec, 2006: mp.csc,
    2011: mp.asin, 2012: mp.acos, 2013: mp.atan, 2014: mp.acot, 2015: mp.asec, 2016: mp.acsc,
    2021: mp.sinh, 2022: mp.cosh, 2023: mp.tanh, 2024: mp.coth, 2025: mp.sech, 2026: mp.csch,
    2031: mp.asinh, 2032: mp.acosh, 2033: mp.atanh, 2034: mp.acoth, 2035: mp.asech, 2036: mp.acsch,
    2061: mp.log10, 2062: mp.log, 2101: mp.sqrt, 2102: mp.cbrt, 2111: abs,
}
ARGUMENT, CUBE_ROOT, ROOT = 1801, 2102, 2124
COMPLEX_ONLY = {ARGUMENT}

REAL_SIZES = [1e-300, 1e-20, 1e-9, 1e-3, 0.1, 0.3, 0.5, 0.7, 0.9, 0.999999, 1.0, 1.0000001, 1.1, 1.5, 2.0, 3.0, 5.0,
              10.0, 30.0, 100.0, 350.0, 1e5, 1e8, 1e10, 1e15, 1e200]
PART_SIZES = [1e-150, 1e-20, 1e-9, 1e-3, 0.1, 0.3, 0.6417, 0.9, 0.999999, 1.0, 1.000001, 1.1, 1.5, 2.0, 3.0, 5.0, 12.0,
              40.0, 300.0, 1e6, 1e100]
# along both axes, beside every cut and every branch point
AXIS_POINTS = [1e-9, 0.3, 0.999999, 1.0, 1.000001, 1.5, 2.0, 12.0, 1e6]
AXIS_DISTANCES = [1e-150, 1e-20, 1e-8]
SIGNS = (1, -1)
REAL_POINTS, SCATTERED_POINTS = 200, 40
LARGEST, SMALLEST = mp.mpf(10) ** 300, mp.mpf(10) ** -300


def in_range(value):
    """Whether the value has a double that is neither infinite nor imprecise."""
    return all(part == 0 or SMALLEST < abs(part) < LARGEST for part in (mp.re(value), mp.im(value)))


def value_at(function, *operands):
    try:
        value = function(*operands)
    except (ValueError, ZeroDivisionError, OverflowError):
        return None
    return value if in_range(value) else None


def real_points():
    yield from (sign * size for size in REAL_SIZES for sign in SIGNS)
    for _ in range(20 * REAL_POINTS):
        yield random.choice((random.uniform(-1, 1), random.uniform(-12, 12),
                             random.choice(SIGNS) * 10 ** random.uniform(-30, 30),
                             random.choice(SIGNS) * (1 + random.choice(SIGNS) * 10 ** random.uniform(-15, -1))))


def complex_points():
    for along, beside, sign, side in itertools.product(AXIS_POINTS, AXIS_DISTANCES, SIGNS, SIGNS):
        yield complex(sign * along, side * beside)
        yield complex(side * beside, sign * along)
    for _ in range(SCATTERED_POINTS):
        yield complex(*(random.choice(SIGNS) * random.choice(PART_SIZES) for _ in range(2)))
        yield complex(random.uniform(-4, 4), random.uniform(-4, 4))


def real_form(identifier, function):
    """Odd roots of negative numbers are negative in real evaluation."""
    if identifier == CUBE_ROOT:
        return lambda x: mp.sign(x) * mp.cbrt(abs(x))
    return function


def real_root(degree, x):
    if x >= 0:
        return x ** (1 / degree)
    return -((-x) ** (1 / degree)) if int(degree) % 2 else mp.mpc(0, 1)


def line(identifier, kind, operands, value):
    numbers = [float(part(z)).hex() if part(z) else "0"
               for z in (*operands, value) for part in ((mp.re,) if kind == "R" else (mp.re, mp.im))]
    return f"{identifier} {kind} {' '.join(numbers)}"


def lines_of(identifier, function):
    taken = 0
    for x in real_points():
        value = value_at(real_form(identifier, function), mp.mpf(x))
        if value is None or mp.im(value) != 0 or identifier in COMPLEX_ONLY or taken == REAL_POINTS:
            continue
        taken += 1
        yield line(identifier, "R", [x], value)
    for z in complex_points():
        value = value_at(function, mp.mpc(z))
        if value is not None:
            yield line(identifier, "C", [z], value)


def root_lines():
    degrees = [2.0, 3.0, -3.0, 5.0, -2.0, 7.5, 0.5, 0.3, -1.0, 100.0, 3.9]
    sizes = [1e-15, 0.001, 0.5, 0.999, 1.0, 2.0, 8.0, 1e3, 1e15]
    for degree, size, sign in itertools.product(degrees, sizes, SIGNS):
        value = value_at(real_root, mp.mpf(degree), mp.mpf(sign * size))
        if value is not None and mp.im(value) == 0:
            yield line(ROOT, "R", [degree, sign * size], value)
    for z in complex_points():
        degree = complex(random.choice(degrees), random.choice((0.0, 0.0, 1.5, -2.0)))
        value = value_at(lambda n, w: mp.exp(mp.log(w) / n), mp.mpc(degree), mp.mpc(z))
        if value is not None:
            yield line(ROOT, "C", [degree, z], value)


def main():
    lines = [text for identifier, function in FUNCTIONS.items() for text in lines_of(identifier, function)]
    lines += root_lines()
    with open("reference_values.txt", "w", encoding="ascii") as file:
        file.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
