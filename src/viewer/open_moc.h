// Compressed MOC products: decompressed into a file of their own, which is then opened.
#pragma once

#include <string>

// The Open MOC command: chooses a product, decompresses it and shows its image.
void open_moc_object();

// Decompresses the product into a file in the working directory, named as the product up to its first point with the
// extension tmp; a file of that name that was there is deleted, and the new one with the session. `made`: its path.
// False after reporting (error_string), also where the product itself has that name.
bool decompress_moc(const std::string &path, std::string *made);
