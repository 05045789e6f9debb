# SPDX-License-Identifier: Apache-2.0
"""The same as c/evaluate.c in Python, with the standard library alone: evaluate.py [libzqengine.so.0 libbifun.so.0]"""

import ctypes
import sys
from ctypes import POINTER, Structure, byref, c_char_p, c_double, c_int32, c_int64, c_size_t, c_ubyte, c_uint16, c_uint32, c_void_p

ROWS = 3


class Column(Structure):  # bifun_column
    _fields_ = [("no_nulls", c_uint32), ("selection", POINTER(c_uint16)), ("data", c_void_p)]


class IntConstant(Structure):
    _fields_ = [("not_null", c_uint32), ("value", c_int32)]


class StringConstant(Structure):
    _fields_ = [("not_null", c_uint32), ("length", c_uint32), ("trailing_blanks", c_uint32), ("inline_bytes", c_ubyte * 52),
                ("data", c_char_p)]


class IntervalYmConstant(Structure):
    _fields_ = [("not_null", c_uint32), ("years", c_int32), ("months", c_int32)]


class FormatFault(Structure):
    _fields_ = [("meaning", c_char_p), ("offset", c_uint32), ("length", c_uint32)]


# The engine first, and globally: there the library finds its operations.
engine = ctypes.CDLL(sys.argv[1] if len(sys.argv) > 1 else "libzqengine.so.0", mode=ctypes.RTLD_GLOBAL)
library = ctypes.CDLL(sys.argv[2] if len(sys.argv) > 2 else "libbifun.so.0")

# Functions return an int unless ctypes is told otherwise, and pointers have to be told as such.
for name, result, *arguments in [
    ("zqengine_status_meaning", c_char_p, c_int32),
    ("zqengine_environment_create", c_void_p),
    ("zqengine_environment_destroy", None, c_void_p),
    ("zqengine_environment_set_format", c_int32, c_void_p, c_int32, c_char_p, c_uint32, POINTER(FormatFault)),
    ("rt_memobj_create_ex", c_void_p, c_void_p, c_int32, c_uint32, c_char_p, c_uint32),
    ("rt_memobj_destroy", None, c_void_p, c_void_p),
    ("zqengine_column_create", POINTER(Column), c_int32, c_uint32),
    ("zqengine_column_destroy", None, POINTER(Column)),
    ("zqengine_column_clear", None, POINTER(Column)),
    ("zqengine_column_status", c_int32, POINTER(Column)),
    ("zqengine_column_set_kind", c_int32, POINTER(Column), c_int32),
    ("zqengine_column_set_string", c_int32, POINTER(Column), c_uint32, c_char_p, c_uint32, c_uint32),
    ("zqengine_column_set_large_object", c_int32, POINTER(Column), c_uint32, c_void_p),
    ("zqengine_column_set_text", c_int32, POINTER(Column), c_uint32, c_char_p, c_uint32),
    ("zqengine_column_set_null", c_int32, POINTER(Column), c_uint32),
    ("zqengine_column_get_text", c_int32, POINTER(Column), c_uint32, c_char_p, c_size_t, POINTER(c_size_t)),
    ("zqengine_large_object_store_create", c_void_p),
    ("zqengine_large_object_store_destroy", None, c_void_p),
    ("zqengine_large_object_create", c_void_p, c_void_p),
    ("zqengine_large_object_destroy", None, c_void_p),
    ("zqengine_large_object_append", c_int32, c_void_p, c_char_p, c_size_t),
]:
    function = getattr(engine, name)
    function.restype, function.argtypes = result, arguments

# As in bop/frame/value_types.def.
BOOL, INT, BIGINT, DOUBLE, DECIMAL, DATETIME, VARCHAR, VARBINARY, INTERVAL_YM, INTERVAL_DT, BLOB = range(11)
NULL = 1  # of zqengine_column_get_text
UTF8 = 1  # of engine/charset.h
MONTH, SECOND = 2, 6  # of zqtime_field
DATE_KIND = 1  # of zqdt_kind


def meaning(status):
    return engine.zqengine_status_meaning(status).decode()


def check(status):
    if status != 0:
        raise RuntimeError(meaning(status))


class OwnedColumn:
    """A column of the engine, made of values as text; None is NULL."""

    def __init__(self, type_code, texts=()):
        self.pointer = engine.zqengine_column_create(type_code, ROWS)
        if not self.pointer:
            raise MemoryError
        for row, text in enumerate(texts):
            if text is None:
                check(engine.zqengine_column_set_null(self.pointer, row))
            else:
                value = text if isinstance(text, bytes) else text.encode()
                check(engine.zqengine_column_set_text(self.pointer, row, value, len(value)))

    def __del__(self):
        engine.zqengine_column_destroy(self.pointer)

    def rows(self, selection):
        """The same values as rows `selection` of the column."""
        array = (c_uint16 * len(selection))(*selection)
        return Column(0, array, self.pointer.contents.data)

    def text(self, row):
        length = c_size_t()
        buffer = ctypes.create_string_buffer(256)
        status = engine.zqengine_column_get_text(self.pointer, row, buffer, len(buffer), byref(length))
        if status == NULL:
            return "NULL"
        check(status)
        return buffer.raw[: length.value].decode()


def text_constant(text):
    constant = StringConstant(not_null=1, length=len(text))
    if len(text) <= 48:
        constant.inline_bytes[: len(text)] = text
    else:
        constant.data = text
    return constant


def call(name, arguments, result, rows=ROWS):
    """Calls an exported function; arguments are columns and records of constants."""
    pointers = [argument.pointer if isinstance(argument, OwnedColumn) else byref(argument) for argument in arguments]
    return getattr(library, name)(c_void_p(session), c_void_p(memory), *pointers, result.pointer, c_uint32(rows))


def show(title, status, result, rows=ROWS):
    status = status or engine.zqengine_column_status(result.pointer)
    print(f"{title}: {status} {meaning(status)}" if status else f"{title}: " + " ".join(f"[{result.text(row)}]" for row in range(rows)))


def failing_row(name, argument, result):
    return next(row for row in range(ROWS) if call(name, [argument.rows([row])], result, 1) < 0)


def numbers():
    ints, int_result = OwnedColumn(INT, ["1", None, "3"]), OwnedColumn(INT)
    seven, two = IntConstant(1, 7), IntConstant(1, 2)
    show("NVL(x, 7)", call("bnvl_int_av", [ints, seven], int_result), int_result)
    show("NVL(x, 7) of two rows", call("bnvl_int_av", [ints.rows([2, 0]), seven], int_result, 2), int_result, 2)
    decimals, decimal_result = OwnedColumn(DECIMAL, ["1.005", "-2.675", "12345678901234567890.125"]), OwnedColumn(DECIMAL)
    show("ROUND(x, 2)", call("bround_dec_av_li_math_dbl", [decimals, two], decimal_result), decimal_result)
    doubles, double_result = OwnedColumn(DOUBLE, ["1", "10", "-1"]), OwnedColumn(DOUBLE)
    show("LN(x)", call("bln_a_math_dbl", [doubles], double_result), double_result)
    print("LN(x) fails in row", failing_row("bln_a_math_dbl", doubles, double_result))
    show("LN(x) of two rows", call("bln_a_math_dbl", [doubles], double_result, 2), double_result, 2)


def texts():
    names, text_result = OwnedColumn(VARCHAR, ["Jürgen", "山田 花", None]), OwnedColumn(VARCHAR)
    show("LEFT(x, 2)", call("bleftstr_av_str", [names, IntConstant(1, 2)], text_result), text_result)
    truths = OwnedColumn(BOOL, ["true", "false", None])
    yes, no = text_constant(b"yes"), text_constant(b"no, and this one has more than the 48 bytes of the record")
    engine.zqengine_column_clear(text_result.pointer)
    show("IF(x, 'yes', ...)", call("bifoperator_varchar_avv", [truths, yes, no], text_result), text_result)
    values, other, bytes_result = OwnedColumn(VARBINARY, [b"\x01\x02"]), text_constant(b"other"), OwnedColumn(VARBINARY)
    check(call("bnvl_varbinary_av", [values, other], bytes_result))
    print(f"NVL(x, 'other'): {len(bytes_result.text(0))} bytes, {len(bytes_result.text(1))} bytes")
    store = engine.zqengine_large_object_store_create()
    large = engine.zqengine_large_object_create(store)
    for part in b"a part, ", b"and another":
        check(engine.zqengine_large_object_append(large, part, len(part)))
    objects, lengths = OwnedColumn(BLOB), OwnedColumn(BIGINT)
    check(engine.zqengine_column_set_large_object(objects.pointer, 0, large))
    show("LENGTHB(x)", call("blengthb_blob_a_str", [objects], lengths), lengths)
    engine.zqengine_large_object_destroy(large)
    engine.zqengine_large_object_store_destroy(store)


def dates():
    days, counts, day_result = OwnedColumn(DATETIME, ["2024-01-31", "2023-12-31", None]), OwnedColumn(BIGINT, ["1", "-10", "3"]), OwnedColumn(DATETIME)
    check(engine.zqengine_column_set_kind(day_result.pointer, DATE_KIND))
    show("DATEADD(MONTH, n, x)", call("bdateadd_vaa_date", [IntConstant(1, MONTH), counts, days], day_result), day_result)
    spans, span_result = OwnedColumn(INTERVAL_YM, ["1-02", "-0-01", "0-11"]), OwnedColumn(INTERVAL_YM)
    show("GREATEST(x, INTERVAL '1' YEAR)", call("bgreat_ivym_av_date", [spans, IntervalYmConstant(1, 1, 0)], span_result), span_result)
    times, seconds = OwnedColumn(INTERVAL_DT, ["1 02:03:04.5", "0 00:00:59", None]), OwnedColumn(DOUBLE)
    show("EXTRACT(SECOND FROM x)", call("bextract_iv_dt_ex_va_date", [IntConstant(1, SECOND), times], seconds), seconds)
    fault, wrong = FormatFault(), b"DD of YYYY"
    if engine.zqengine_environment_set_format(session, 0, wrong, len(wrong), byref(fault)) != 0:
        part = wrong[fault.offset : fault.offset + fault.length]
        print(f'"{part.decode()}" in "{wrong.decode()}": {fault.meaning.decode()}')
    check(engine.zqengine_environment_set_format(session, 0, b"DD.MM.YYYY", 10, byref(fault)))
    text_result = OwnedColumn(VARCHAR)
    show("TO_CHAR(x)", call("bto_char_date_def_a_date", [days], text_result), text_result)


check(library.bifun_dll_var_init(1, UTF8, 1))
session = engine.zqengine_environment_create()
memory = engine.rt_memobj_create_ex(session, 0, 4096, b"evaluate.py", 0)
if not session or not memory:
    raise MemoryError
sys.stdout.reconfigure(encoding="utf-8")
numbers()
texts()
dates()
engine.rt_memobj_destroy(session, memory)
engine.zqengine_environment_destroy(session)
