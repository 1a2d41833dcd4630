#pragma once

#include <string>

/// Messages as a DVR sends them.

/// @return the description of an event with one metadata file and `files` files in one stream
std::string Description(const std::string& reid, int files);
/// @return a document's text, escaped as an element's text
std::string Escaped(const std::string& text);

std::string XmlMessage(int events, int filesPerEvent);
std::string EventListMessage(int events);
std::string EventMessage(const std::string& reid, int files);
std::string FileCompleteMessage(const std::string& reid, const std::string& file);
