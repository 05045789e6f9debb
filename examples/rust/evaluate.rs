// SPDX-License-Identifier: Apache-2.0
//! LEFT and LN from Rust: the embedded engine and the library are linked, no crate is needed.
//!     rustc evaluate.rs -L /usr/local/lib

use std::ffi::{c_char, c_void, CStr};
use std::ptr;

/// `bifun_column` of bop/frame/contract.h.
#[repr(C)]
struct Column {
    no_nulls: u32,
    selection: *const u16,
    data: *mut c_void,
}

/// `bifun_int_constant`.
#[repr(C)]
struct IntConstant {
    not_null: u32,
    value: i32,
}

#[repr(C)]
struct Environment {
    _opaque: [u8; 0],
}

#[repr(C)]
struct MemoryObject {
    _opaque: [u8; 0],
}

// The library leaves the operations of the engine undefined: both have to be linked.
#[link(name = "bifun")]
extern "C" {
    fn bifun_dll_var_init(compatible_mode: u32, charset_code: u32, case_sensitive: u32) -> i32;
    fn bleftstr_av_str(e: *mut Environment, m: *mut MemoryObject, x: *const Column, n: *const IntConstant, result: *mut Column, rows: u32) -> i32;
    fn bln_a_math_dbl(e: *mut Environment, m: *mut MemoryObject, x: *const Column, result: *mut Column, rows: u32) -> i32;
}

#[link(name = "zqengine")]
extern "C" {
    fn zqengine_status_meaning(status: i32) -> *const c_char;
    fn zqengine_environment_create() -> *mut Environment;
    fn zqengine_environment_destroy(environment: *mut Environment);
    fn zqengine_column_create(column_type: i32, capacity: u32) -> *mut Column;
    fn zqengine_column_destroy(column: *mut Column);
    fn zqengine_column_status(column: *const Column) -> i32;
    fn zqengine_column_set_text(column: *mut Column, row: u32, text: *const c_char, length: u32) -> i32;
    fn zqengine_column_get_text(column: *const Column, row: u32, buffer: *mut c_char, size: usize, length: *mut usize) -> i32;
    fn rt_memobj_create_ex(e: *mut Environment, reserved: i32, size: u32, file: *const c_char, line: u32) -> *mut MemoryObject;
    fn rt_memobj_destroy(e: *mut Environment, memory: *mut MemoryObject);
}

const DOUBLE: i32 = 3; // of bop/frame/value_types.def
const VARCHAR: i32 = 6;
const NULL: i32 = 1; // of zqengine_column_get_text

fn check(status: i32) -> Result<(), String> {
    match status {
        0 => Ok(()),
        _ => Err(format!("{status} {}", unsafe { CStr::from_ptr(zqengine_status_meaning(status)) }.to_string_lossy())),
    }
}

/// A column of the engine, which owns the bytes of its strings.
struct OwnedColumn(*mut Column);

impl OwnedColumn {
    fn new(column_type: i32, texts: &[Option<&str>], capacity: u32) -> Result<OwnedColumn, String> {
        let column = OwnedColumn(unsafe { zqengine_column_create(column_type, capacity) });
        if column.0.is_null() {
            return Err("out of memory".into());
        }
        for (row, text) in texts.iter().enumerate() {
            if let Some(text) = text {
                // All rows are NULL at first.
                check(unsafe { zqengine_column_set_text(column.0, row as u32, text.as_ptr().cast(), text.len() as u32) })?;
            }
        }
        Ok(column)
    }

    fn text(&self, row: u32) -> Result<Option<String>, String> {
        let mut buffer = vec![0u8; 256];
        let mut length = 0;
        match unsafe { zqengine_column_get_text(self.0, row, buffer.as_mut_ptr().cast(), buffer.len(), &mut length) } {
            NULL => Ok(None),
            status => check(status).map(|()| Some(String::from_utf8_lossy(&buffer[..length]).into_owned())),
        }
    }
}

impl Drop for OwnedColumn {
    fn drop(&mut self) {
        unsafe { zqengine_column_destroy(self.0) }
    }
}

fn main() -> Result<(), String> {
    unsafe { check(bifun_dll_var_init(1, /* UTF-8 */ 1, 1))? };
    let session = unsafe { zqengine_environment_create() };
    let memory = unsafe { rt_memobj_create_ex(session, 0, 4096, ptr::null(), 0) };
    if session.is_null() || memory.is_null() {
        return Err("out of memory".into());
    }

    let names = OwnedColumn::new(VARCHAR, &[Some("Jürgen"), Some("山田 花"), None], 3)?;
    let left = OwnedColumn::new(VARCHAR, &[], 3)?;
    let two = IntConstant { not_null: 1, value: 2 };
    check(unsafe { bleftstr_av_str(session, memory, names.0, &two, left.0, 3) })?;
    check(unsafe { zqengine_column_status(left.0) })?;
    for row in 0..3 {
        println!("LEFT(x, 2): {:?}", left.text(row)?);
    }

    // Row 1 of the column alone, by a selection vector; then all, one of which is outside the domain.
    let numbers = OwnedColumn::new(DOUBLE, &[Some("-1"), Some("10")], 2)?;
    let logarithms = OwnedColumn::new(DOUBLE, &[], 2)?;
    let selection = [1u16];
    let one = unsafe { Column { no_nulls: (*numbers.0).no_nulls, selection: selection.as_ptr(), data: (*numbers.0).data } };
    check(unsafe { bln_a_math_dbl(session, memory, &one, logarithms.0, 1) })?;
    println!("LN(x): {:?}", logarithms.text(0)?);
    println!("LN(x): {:?}", check(unsafe { bln_a_math_dbl(session, memory, numbers.0, logarithms.0, 2) }));

    unsafe {
        rt_memobj_destroy(session, memory);
        zqengine_environment_destroy(session);
    }
    Ok(())
}
