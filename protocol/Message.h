#pragma once

#include <tinyxml.h>

#include <list>
#include <string>
#include <utility>

/// What the messages of both dialects have in common: the envelope, the parse report and the files of an
/// event.
///
/// A message is a document with one top-level element `msg`. Its attribute `req` names the message; in 2.0
/// every message of ours also carries `protocolVersion`="2.0".

/// Where every copy of an EVENT_XFER_COMPLETE is saved, overwritten each time.
constexpr const char* kOutgoingEventXferComplete = "/mnt/hd/outgoingETCstring";

/// Adds the element `msg` with its attribute `req` to an empty document.
/// @return the element, which belongs to the document, for further attributes
TiXmlElement* AddMsg(TiXmlDocument& document, const char* req);

/// @return the attribute of the document's `msg`, which belongs to the document; null if the attribute or
///         the whole `msg` is missing
const char* MsgAttribute(const TiXmlDocument& document, const char* name);

/// @return `req` of the document's `msg`, which belongs to the document; null if there is none
/// Aborts the process, without a log line, if there is no `msg` at all: such a peer speaks no dialect of
/// ours.
const char* MsgReq(const TiXmlDocument& document);

/// Parses `text` into an empty document. Where it is not XML, logs what the parser reports, in two lines at
/// level 1; the caller then asserts that there is no error, so that the assertion names its function.
void ParseOrReport(TiXmlDocument& document, const char* text);

/// @return a configuration that no DVR accepts: a printed document, to travel escaped in an attribute
std::string PrintFakeConfig(const char* info);

/// Appends one (event identifier, file name) pair for each file that a `recording-event` names: its metadata
/// first, then the children of each stream, whatever they are called. Throws std::logic_error for a file
/// without a `name`; nobody catches it, so the process ends.
void QueueEventFiles(const TiXmlHandle& recordingEvent, const std::string& eventId,
                     std::list<std::pair<std::string, std::string>>& files);
