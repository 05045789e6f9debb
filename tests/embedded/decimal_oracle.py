# SPDX-License-Identifier: Apache-2.0
"""Checks decimals against Python's: decimal_oracle.py COMMAND..., which runs embedded_decimal_test; it is asked with --answer."""
import decimal
import random
import struct
import subprocess
import sys
from decimal import Decimal

decimal.setcontext(decimal.Context(prec=2000, rounding=decimal.ROUND_HALF_UP, Emin=-10000, Emax=10000))
generator = random.Random(20240229)
LARGEST = Decimal(10) ** 127


def encoded(number, zero_scale=None):
    """Bytes and plain text of the number rounded once to 38 digits and 127 behind the point; None where it is too large."""
    exponent = max(number.as_tuple().exponent, -127, number.adjusted() - 37 if number else -127)
    rounded = number.quantize(Decimal((0, (1,), exponent)))
    if abs(rounded) >= LARGEST:
        return None
    scale = max(0, -exponent) if rounded or zero_scale is None else zero_scale
    coefficient, zeros = int(abs(rounded).scaleb(scale)), 0
    if len(str(coefficient)) > 38 and scale > 0:  # rounded up to the next power of ten
        coefficient, scale = coefficient // 10, scale - 1
    while coefficient >= 10 ** 38:
        coefficient, zeros = coefficient // 10, zeros + 1
    mark = 0x80 if not rounded else 0x3E if rounded < 0 else 0xC1
    head = bytes([mark, len(str(coefficient)) + zeros, scale, zeros, 0, 0, 0, 0])
    digits = (str(coefficient) + "0" * zeros).rjust(scale + 1, "0")
    text = digits[:len(digits) - scale] + ("." + digits[-scale:] if scale else "")
    return (head + coefficient.to_bytes(16, "little") + bytes(6)).hex(), ("-" if rounded < 0 else "") + text


def bits(number):
    return "%x" % struct.unpack("<Q", struct.pack("<d", number))


def answer_of(expected):
    return "-6102" if expected is None else "0 %s %s %s" % (*expected, bits(float(expected[1]) or 0.0))


def digits(count):
    kind = generator.randrange(4)
    if kind == 0:  # at a power of ten, or half way to the next unit of 38 digits
        return generator.choice(["9" * count, "1" + "0" * (count - 1), "9" * 38 + "5" + "0" * count, "1" * 38 + "4" + "9" * count])
    return "".join(generator.choices("05" if kind == 1 else "0123456789", k=count))


def number_text():
    length = generator.choice([1, 7, 8, 9, 15, 16, 17, 18, 19, 20, 37, 38, 39, 40, generator.randint(1, 60), generator.randint(1, 140)])
    text = digits(length)
    if generator.random() < 0.7:
        point = generator.randrange(len(text) + 1)
        text = text[:point] + "." + text[point:]
    if generator.random() < 0.4:
        size = generator.choice([3, 30, 130, 180])
        text += generator.choice("eE") + generator.choice(["", "+", "-"]) + str(generator.randint(0, size))
    return generator.choice(["", "-", "+"]) + text


def exact_text():
    text = "".join(generator.choices("0123456789", k=generator.choice([1, 9, 18, 19, 20, 37, 38, generator.randint(1, 38)])))
    return generator.choice(["", "-"]) + text + "E" + str(generator.choice([0, -2, -generator.randint(0, 127), generator.randint(0, 89)]))


def neighbour(text):
    """The same value in another scale, or one next to it."""
    sign, digit_tuple, exponent = Decimal(text).as_tuple()
    coefficient = int("".join(map(str, digit_tuple)))
    shift = min(generator.randint(0, 38 - len(str(coefficient))), max(0, exponent + 127))
    coefficient = max(0, min(coefficient * 10 ** shift + generator.choice([0, 0, 1, -1]), 10 ** 38 - 1))
    return "%s%dE%d" % ("-" if sign != (generator.random() < 0.1) else "", coefficient, exponent - shift)


def stored(text):
    """The operand as the engine holds it: with no exponent above 0."""
    number = Decimal(text)
    return number.quantize(Decimal(1)) if number.as_tuple().exponent > 0 else number


def operand():
    count = generator.choice([1, 9, 18, 19, 20, 37, 38, generator.randint(1, 38)])
    power = generator.choice([0, -2, -count, -generator.randint(0, 40), -127, generator.randint(-127, 89)])
    return "%s%sE%d" % (generator.choice(["", "-"]), digits(count)[:38], power)


def at_last_digit(text):
    """What is about half a unit, or some units, of the value's 38th digit."""
    unit = Decimal(text).adjusted() - 37
    coefficient = generator.choice(["5", "4", "6", "49", "05", "95", "5" + "0" * 20, "4" + "9" * 30, "5" + "0" * 30 + "1", digits(38)[:38]])
    exponent = unit - len(coefficient) + generator.choice([0, -1, 1, generator.randint(-2, 38)])
    return "%s%sE%d" % (generator.choice(["", "-"]), coefficient, max(-127, min(exponent, 89)))


def rounded_to(number, to, mode):
    if -number.as_tuple().exponent <= to:
        return number
    rounded = number.quantize(Decimal((0, (1,), -to)), mode) if to > -200 else Decimal(0)
    return rounded.quantize(Decimal(1)) if to < 0 else rounded


def quotient_answer(a, b):
    if not b:
        return "-6803"
    quotient = a / b
    least = max(0, b.as_tuple().exponent - a.as_tuple().exponent)
    if not a:
        return answer_of(encoded(Decimal(0), min(least, 127)))
    if quotient * b == a and len(quotient.normalize().as_tuple().digits) <= 38:  # exact: no more zeros at the end than have to be
        exponent = min(quotient.normalize().as_tuple().exponent, -least)
        quotient = quotient.normalize().quantize(Decimal((0, (1,), exponent)))
    return answer_of(encoded(quotient))


def calculation(kind):
    a = operand()
    number = stored(a)
    if kind < 4:
        b = generator.choice([operand, lambda: neighbour(a), lambda: at_last_digit(a)])()
        operation = "+-"[kind % 2]
        a, b = (a, b) if generator.random() < 0.5 else (b, a)
        value = stored(a) + stored(b) if operation == "+" else stored(a) - stored(b)
        return "%s %s %s" % (operation, a, b), answer_of(encoded(value))
    if kind < 6:
        b = operand() if kind == 4 else "%sE%d" % (generator.choice(["5", "15", "125", "5" + "0" * 20]), -generator.randint(0, 127))
        return "* %s %s" % (a, b), answer_of(encoded(number * stored(b)))
    if kind < 8:
        near = -number.as_tuple().exponent - generator.randint(-1, 40)
        to = generator.choice([near, near, 0, 2, generator.randint(-130, 130), -2 ** 31, 2 ** 31 - 1])
        mode = decimal.ROUND_HALF_UP if kind == 6 else decimal.ROUND_DOWN
        letter = "Z" if kind == 7 and to == 0 else "RX"[kind - 6]
        return "%s %s %d" % (letter, a, to), answer_of(encoded(rounded_to(number, to, mode)))
    if generator.random() < 0.2:
        return "N " + a, answer_of(encoded(-number)) + " " + encoded(abs(number))[0]
    if generator.random() < 0.3:
        b = generator.choice([operand, lambda: neighbour(a), lambda: "%dE%d" % (generator.randint(-40, 40), generator.randint(-5, 5))])()
        return "Q %s %s" % (a, b), quotient_answer(number, stored(b))
    integer = generator.choice([2 ** 64 + generator.randint(-2, 1), generator.randrange(10 ** generator.randint(1, 38)), 10 ** 38 - 1])
    zeros = generator.randint(0, 38 - len(str(integer)))
    text = "%s%dE%d" % (generator.choice(["", "", "-"]), integer * 10 ** zeros, generator.choice([-zeros, -zeros, 0, 3, -3, 89]))
    number = stored(text)
    whole = number == number.to_integral_value()
    if kind == 8:
        return "U " + text, answer_of(encoded(Decimal(int(number))) if whole and 0 <= number < 2 ** 64 else None)
    if number < 0 or not whole:
        return "/ " + text, "-6803 77"
    quotient, remainder = divmod(int(number), 16)
    return "/ " + text, answer_of(encoded(Decimal(quotient))) + " %d" % remainder


def question(index):
    kind = index % 20
    if kind >= 10:
        return calculation(kind - 10)
    if kind < 4:
        text = number_text()
        return "T " + text, answer_of(encoded(Decimal(text)))
    if kind < 8:
        a = exact_text()
        b = neighbour(a) if generator.random() < 0.7 else exact_text()
        order = int(Decimal(a).compare(Decimal(b)))
        return "C %s %s" % (a, b), "0 %d %d" % (order, -order)
    if kind == 8:
        number = generator.choice([struct.unpack("<d", generator.randbytes(8))[0], round(generator.uniform(-1e6, 1e6), 2),
                                   generator.uniform(-1, 1) * 2.0 ** generator.randint(-500, 500),
                                   -0.0, float(generator.randint(-2 ** 60, 2 ** 60)), 10.0 ** generator.randint(-130, 130)])
        if number - number != 0:  # NaN and infinities
            return "D " + bits(number), "-6102"
        value = Decimal(repr(number))
        value = value.quantize(Decimal(1)) if value == value.to_integral_value() else value.normalize()
        return "D " + bits(number), answer_of(encoded(value, zero_scale=0))
    number = generator.choice([0, 1, -1, 2 ** 63 - 1, -2 ** 63, generator.randint(-2 ** 63, 2 ** 63 - 1), generator.randint(-9999, 9999)])
    return "I %d" % number, answer_of(encoded(Decimal(number)))


def main():
    count = 400000
    questions = [question(index) for index in range(count)]
    lines = "".join(line + "\n" for line, _ in questions)
    answers = subprocess.run([*sys.argv[1:], "--answer"], input=lines, capture_output=True, text=True, check=True).stdout.splitlines()
    wrong = [(line, expected, got) for (line, expected), got in zip(questions, answers) if expected != got]
    for line, expected, got in wrong[:10]:
        print("%s\n  expected %s\n  got      %s" % (line, expected, got))
    print("%d of %d answers are right" % (len(answers) - len(wrong), count))
    sys.exit(0 if len(answers) == count and not wrong else 1)


main()
