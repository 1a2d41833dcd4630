#pragma once

#include <tinyxml.h>

#include <list>
#include <string>

#include "protocol/v2_0/VelProtocol_2_0.h"
#include "tests/harness/unit/support/HarnessTest.h"

/// A test that plays the DVR of one connection in the newer dialect. Tests set the switches and the lists of
/// the protocol object as the dialogue would have left them.
class Dialogue : public HarnessTest {
 protected:
    using Files = std::list<VelProtocolBase::FileEntry>;
    using Events = std::list<std::string>;

    Dialogue();

    /// The DVR says `text`. @return what the harness would tell its driver
    VelProtocolBase::e_MsgReturn Say(const std::string& text);

    VelProtocol_2_0 protocol;
};

/// Expects the harness to receive a message and then to do exactly this, keeping the connection.
#define EXPECT_REACTION(text, ...)                           \
    do {                                                     \
        EXPECT_EQ(Say(text), VelProtocolBase::MSG_CONTINUE); \
        EXPECT_JOURNAL(Received(text), __VA_ARGS__);         \
    } while (false)

/// The same, closing the connection.
#define EXPECT_CLOSING_REACTION(text, ...)                       \
    do {                                                         \
        EXPECT_EQ(Say(text), VelProtocolBase::MSG_CLOSE_CLIENT); \
        EXPECT_JOURNAL(Received(text), __VA_ARGS__);             \
    } while (false)

/// @name What the DVR says. `rest` is appended to the attributes: R"( hashCode="H")".
/// @{
std::string Msg(const std::string& req, const std::string& rest = "", const std::string& children = "");
std::string EventList(const std::string& children);
/// @param description  the event's description; sent escaped
std::string Event(const std::string& reid, const std::string& description);
std::string FileComplete(const std::string& reid, const std::string& file, const std::string& rest = "");
std::string Acknowledgement(const std::string& reid);
std::string InvalidEvent(const std::string& reid);
std::string TransportException(const std::string& reid);
/// @}

/// @return the description of an event with that identifier, its metadata and one stream of these files
std::string Description(const std::string& reid, const std::string& metadata,
                        const std::list<std::string>& files);

/// @name What the harness says.
/// @{
extern const char* const kGetEventList;
extern const char* const kUpdateSoftware;
extern const char* const kUpdateConfiguration;
std::string NextEvent(const std::string& reid);
std::string GetFile(const std::string& reid, const std::string& file);
std::string GetFileWithNewHash(const std::string& reid, const std::string& file);
std::string EventXferComplete(const std::string& reid);
extern const char* const kDone;
/// @}

/// @name What the harness logs about a FILE_COMPLETE.
/// @{
Entry GotFileComplete(const std::string& reid, const std::string& file);
Entry InvalidFileComplete(const std::string& document);
Entry IncompleteFileComplete();
/// @}

/// @name What the harness does in several steps.
/// @{
Entries Joined(std::initializer_list<Entries> steps);
/// The list has no file left: says so, saves the report and sends it.
Entries CompletedEvent(const std::string& reid);
/// The plain request for an event's last file.
Entries RequestedLastFile(const std::string& reid, const std::string& file);
Entries RequestedLastFileWithNewHash(const std::string& reid, const std::string& file);
/// @}
