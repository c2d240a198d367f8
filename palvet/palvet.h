#ifndef PALVET_PALVET_H
#define PALVET_PALVET_H

// Umbrella header: the whole public interface of the library.

#include <palvet/charset/charset_convert.h>
#include <palvet/containers/crc.h>
#include <palvet/containers/hash_table.h>
#include <palvet/containers/ptr_collection.h>
#include <palvet/core/clock.h>
#include <palvet/core/debug_output.h>
#include <palvet/core/export.h>
#include <palvet/files/file_utils.h>
#include <palvet/files/system_utils.h>
#include <palvet/imaging/bmp.h>
#include <palvet/imaging/color_conversion.h>
#include <palvet/imaging/color_tables.h>
#include <palvet/imaging/drawing.h>
#include <palvet/imaging/geometry.h>
#include <palvet/imaging/pixel_buffer.h>
#include <palvet/imaging/rotation.h>
#include <palvet/imaging/yuv_layout_convert.h>
#include <palvet/imaging/yuv_rgb_convert.h>
#include <palvet/text/buffer.h>
#include <palvet/text/chinese_numerals.h>
#include <palvet/text/hex_text.h>
#include <palvet/text/memory_search.h>
#include <palvet/text/simple_string.h>
#include <palvet/text/split.h>
#include <palvet/text/text_utils.h>
#include <palvet/text/url_encoding.h>
#include <palvet/threads/base_thread.h>
#include <palvet/version.h>

#endif
