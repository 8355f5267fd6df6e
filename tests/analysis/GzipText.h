#pragma once

#include <string>

/// The text as a gzip file of one member.
std::string Gzip(const std::string& text);
