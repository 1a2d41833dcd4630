#pragma once

#include <string>
#include <vector>

/// The messages of both sides, as text. What the DVR sends is here as a DVR might write it; what the harness
/// sends is here byte for byte.

// From the DVR, both dialects.

/// A message with only its name and, if given, further attributes: ` reid="E1"`.
std::string Message(const std::string& req, const std::string& attributes = "");

std::string Ok();
std::string FileComplete(const std::string& reid, const std::string& file,
                         const std::string& attributes = "");

/// An event's description: its metadata file first, the others as children of one stream. No file at all:
/// without `video`.
std::string Description(const std::string& reid, const std::vector<std::string>& files);

// From the DVR, 1.0.

std::string Xml(const std::vector<std::string>& descriptions);

// From the DVR, 2.0.

std::string EventList(const std::vector<std::string>& ids);
std::string Event(const std::string& reid, const std::string& description);
std::string EventXferAck(const std::string& reid);
std::string InvalidEvent(const std::string& reid);
std::string TransportException(const std::string& reid);
std::string XferInProgress(const std::string& reid);

/// From the harness, 1.0.
namespace v1 {
extern const char* const kGetXml;
extern const char* const kUpdateConfiguration;
extern const char* const kDone;
std::string GetFile(const std::string& reid, const std::string& file);
std::string EventXferComplete(const std::vector<std::string>& ids);
}  // namespace v1

/// From the harness, 2.0.
namespace v2 {
extern const char* const kUpdateSoftware;
extern const char* const kGetEventList;
extern const char* const kUpdateConfiguration;
extern const char* const kDone;
std::string NextEvent(const std::string& reid);
std::string GetFile(const std::string& reid, const std::string& file);
std::string EventXferComplete(const std::string& reid);
}  // namespace v2
