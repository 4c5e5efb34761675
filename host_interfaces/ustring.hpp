#pragma once

#include <string>

/// @file
/// The one text type of names.

/// UTF-16 text: the form of every name inside the library. A byte of a file name that is not valid UTF-8
/// travels as one unpaired unit 0xDC00 + byte, so that no file of the disk is out of reach.
using ustring = std::u16string;
