#ifndef PALVET_PALVET_H
#define PALVET_PALVET_H

// Umbrella header: the whole public interface of the library.

#include <palvet/core/clock.h>
#include <palvet/core/debug_output.h>
#include <palvet/core/export.h>
#include <palvet/imaging/color_conversion.h>

#endif
