#pragma once

#include <string>
#include <vector>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "tests/harness/unit/support/HarnessTest.h"
#include "tests/support/Escaped.h"

/// A test of one protocol object of the older dialect, and the texts that are sent in it.
class Dialogue_1_0 : public HarnessTest {
 protected:
    using FileList = std::list<VelProtocolBase::FileEntry>;
    using EventList = std::list<std::string>;

    static constexpr const char* kOk = "<msg req=\"OK\" />";

    VelProtocolBase::e_MsgReturn Handle(const std::string& text) {
        Feed(text);
        return protocol.HandleMessage();
    }

    /// Takes a message that sets the scene, and ignores its lines in the journal.
    void Given(const std::string& text) {
        Handle(text);
        TakeJournal();
    }

    /// @return an XML message whose xmlFile holds that markup
    static std::string XmlOf(const std::string& content) {
        return "<msg req=\"XML\"><xmlFile>" + content + "</xmlFile></msg>";
    }

    static std::string String(const std::string& description) {
        return "<string>" + Escaped(description) + "</string>";
    }

    /// @return an XML message with a string element for each description
    static std::string Xml(const std::vector<std::string>& descriptions) {
        std::string content;
        for (const std::string& description : descriptions) {
            content += String(description);
        }
        return XmlOf(content);
    }

    /// @return a description with a metadata file and, unless there are none, one stream of files
    static std::string Event(const std::string& reid, const std::string& metadata,
                             const std::vector<std::string>& files = {}) {
        std::string stream;
        for (const std::string& file : files) {
            stream += "<file name=\"" + file + "\" />";
        }
        return "<recording-event reid=\"" + reid + "\"><video><metadata name=\"" + metadata + "\" />" +
               (files.empty() ? "" : "<streams><stream>" + stream + "</stream></streams>") +
               "</video></recording-event>";
    }

    static std::string FileComplete(const std::string& reid, const std::string& file) {
        return "<msg req=\"FILE_COMPLETE\" reid=\"" + reid + "\" file=\"" + file + "\" />";
    }

    static std::string GetFile(const std::string& reid, const std::string& file) {
        return "<msg req=\"GET_FILE\" path=\"" + reid + "\" file=\"" + file + "\" />";
    }

    static Entry FoundEvent(const std::string& reid) { return Logged(32, "Found event " + reid); }

    static Entry GotFileComplete(const std::string& reid, const std::string& file) {
        return Logged(64, "Got FILE_COMPLETE for: reid=" + reid + "  file=" + file);
    }

    /// What the end of an export leaves in the journal.
    Entries ExportEnded(const EventList& reids) const {
        std::vector<Entry> entries = {Logged(16, "Sending EVENT_XFER_COMPLETE")};
        std::string items;
        std::string savedItems;
        for (const std::string& reid : reids) {
            entries.push_back(Logged(16, "HandleMessage: event = '" + reid + "'"));
            items += "<string>" + reid + "</string>";
            savedItems += "        <string>" + reid + "</string>\n";
        }
        entries.push_back(Saved(
            "/mnt/hd/outgoingETCstring",
            "<msg req=\"EVENT_XFER_COMPLETE\">\n    <events>\n" + savedItems + "    </events>\n</msg>\n"));
        Append(entries, Sent("<msg req=\"EVENT_XFER_COMPLETE\"><events>" + items + "</events></msg>"));
        entries.push_back(Logged(16, "Sending DONE"));
        Append(entries, Sent("<msg req=\"DONE\" />"));
        return entries;
    }

    VelProtocol_1_0 protocol{TestOptions(), kSocket};

 private:
    static void Append(std::vector<Entry>& entries, const Entries& more) {
        entries.insert(entries.end(), more.begin(), more.end());
    }
};
