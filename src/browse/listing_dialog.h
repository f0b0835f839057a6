// The wait for the list of files. Private to the folder.
#pragma once

struct BrowseState;

// Builds the list of files from the state's pattern and offers the first when it is there. A dialog stands meanwhile,
// by which the walk can be left.
void browse_get_file_list(BrowseState *state);
void close_listing_dialog();
