// The colours that an image's product brings along.
#pragma once

#include "base/pixel_image.h"
#include "oa/oa.h"

#include <optional>

// Of a GIF image: its own colour table, which stands before it in the label tree, or else the file's global one, black
// behind its end. Nothing for other products and for a table that cannot be read, which is reported.
std::optional<ColourTable> read_file_colours(const ObjDesc *image);
