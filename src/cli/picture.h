// The picture of an image part as the viewer shows it, as a PNG file.
#pragma once

#include "viewer/model/image_description.h"
#include "viewer/model/image_part.h"

#include <cstdio>
#include <string>

// `description` holds the range of the stretch and the directions. Returns an empty text, or what failed.
std::string write_picture(ImagePart *part, const ImageDescription &description, FILE *file);
