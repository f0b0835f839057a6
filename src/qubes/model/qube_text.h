// What is said of a qube in words: its bands, its suffix planes, all of it.
#pragma once

#include "oa/qube.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The centre of a band (from 1); NaN where the label has none.
double band_center(const OaQubeKeywords &qube, int64_t band);
// "1.25"; empty where the label has none.
std::string band_center_text(const OaQubeKeywords &qube, int64_t band);
// "3: 1.25 MICROMETER"; "3" where the label has no centre.
std::string qube_band_text(const OaQubeKeywords &qube, int64_t band);

// Suffix planes, numbered from 1: those along SAMPLE (side planes), then LINE (bottom planes), then BAND (back planes).
int64_t suffix_plane_count(const OaQubeKeywords &qube);
OaQubePlane suffix_plane(const OaQubeKeywords &qube, int64_t number);
// The item's name, "NAME 2" where all items of the axis share one, else "SAMPLE suffix 2".
std::string suffix_plane_name(const OaQubeKeywords &qube, const OaQubePlane &plane);
// "side plane (lines x bands)"
const char *suffix_plane_kind(OaQubeAxis axis);
// The first plane of that name, letter case aside; "SAMPLE suffix 2" finds one that has a name too.
std::optional<OaQubePlane> find_suffix_plane(const OaQubeKeywords &qube, const std::string &name);

// A line each: axes in the file's order, core, special values, suffix items (100 at most), band centres.
std::vector<std::string> describe_qube(const OaQubeKeywords &qube);
