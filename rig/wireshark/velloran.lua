-- The export protocol of port 5001, for Wireshark and tshark 4.0. One file, so that installing it is copying it to the
-- plugins folder; or name it once: tshark -X lua_script:velloran.lua -r example.pcapng -Y velloran
-- doc/wireshark.md has the filters, doc/protocol.md the protocol.
--
-- A text is shown as soon as its document is complete, whatever its prefix announces: to believe a wrong prefix would
-- be to wait for bytes that never come, or to take the next message for them. So a frame is incomplete while its document
-- is open; if the document is complete, and nothing or another frame follows it, the frame is whole, and wrong if it
-- announced more. Bytes that are not a frame are skipped with the rest of their segment.

local isKnown, known = pcall(Dissector.get, "velloran")
if isKnown and known then
    return -- installed as a plugin and named on the command line as well
end

local velloran = Proto("velloran", "Velloran export protocol")
local stream = Field.new("tcp.stream")

-- What a message carries besides its name. Attributes and elements are called what the protocol calls them.
local attributes = {
    protocolVersion = ProtoField.string("velloran.protocolVersion", "Protocol version"),
    reid = ProtoField.string("velloran.reid", "Event"),
    path = ProtoField.string("velloran.path", "Path"),
    file = ProtoField.string("velloran.file", "File"),
    source = ProtoField.string("velloran.source", "Source"),
    hashCode = ProtoField.string("velloran.hashCode", "Hash"),
    rehash = ProtoField.string("velloran.rehash", "New hash wanted"),
    length = ProtoField.uint64("velloran.length", "Length of the file", base.DEC),
    duration = ProtoField.uint64("velloran.duration", "Minutes until the next export", base.DEC),
    txt = ProtoField.string("velloran.txt", "Configuration"),
    message = ProtoField.string("velloran.message", "Configuration"),
}
local elements = {
    events = ProtoField.string("velloran.events", "Events"),
    event = ProtoField.string("velloran.event", "Event"),
    string = ProtoField.string("velloran.string", "String"),
    xmlFile = ProtoField.string("velloran.xmlFile", "Description"),
}
local fields = {
    prefix = ProtoField.bytes("velloran.prefix", "Prefix"),
    announced = ProtoField.uint32("velloran.prefix.length", "Announced length", base.DEC),
    actual = ProtoField.uint32("velloran.prefix.actual", "Actual length", base.DEC),
    text = ProtoField.bytes("velloran.text", "Text"),
    sender = ProtoField.string("velloran.sender", "Sender"),
    dialect = ProtoField.string("velloran.dialect", "Dialect"),
    req = ProtoField.string("velloran.req", "Message"),
    attribute = ProtoField.string("velloran.attribute", "Other attribute"),
    element = ProtoField.string("velloran.element", "Other element"),
    describedEvent = ProtoField.string("velloran.description.reid", "Described event"),
    describedFile = ProtoField.string("velloran.description.file", "Described file"),
    responseIn = ProtoField.framenum("velloran.response_in", "Response in", base.NONE, frametype.RESPONSE),
    requestIn = ProtoField.framenum("velloran.request_in", "Request in", base.NONE, frametype.REQUEST),
    time = ProtoField.relative_time("velloran.time", "Time since the request"),
    unreadable = ProtoField.bytes("velloran.unreadable", "Unreadable bytes"),
}
for _, list in ipairs({attributes, elements, fields}) do
    for _, field in pairs(list) do
        table.insert(velloran.fields, field)
    end
end

local function Expert(name, text, severity)
    return ProtoExpert.new(name, text, expert.group.PROTOCOL, severity)
end
local experts = {
    mismatch = Expert("velloran.prefix.mismatch", "The prefix announces another length", expert.severity.WARN),
    bad = Expert("velloran.prefix.bad", "The prefix goes on after its fifth byte", expert.severity.ERROR),
    huge = Expert("velloran.prefix.huge", "The prefix announces 2 GiB or more", expert.severity.ERROR),
    document = Expert("velloran.document.bad", "The text is not a complete document", expert.severity.ERROR),
    msg = Expert("velloran.msg.missing", "The document has no msg", expert.severity.ERROR),
    unknown = Expert("velloran.req.unknown", "Not a message of the protocol", expert.severity.WARN),
    number = Expert("velloran.number.bad", "Not a decimal number", expert.severity.WARN),
    unanswered = Expert("velloran.response.missing", "No response in this capture", expert.severity.NOTE),
    cut = Expert("velloran.cut", "The message is incomplete", expert.severity.NOTE),
}
for _, info in pairs(experts) do
    table.insert(velloran.experts, info)
end

-- The requests that a response may answer, and which dialects know a message.
local answers = {
    XML = {GET_XML = true},
    EVENT_LIST = {GET_EVENT_LIST = true},
    EVENT = {NEXT_EVENT = true},
    FILE_COMPLETE = {GET_FILE = true},
    INVALID_EVENT = {NEXT_EVENT = true, GET_FILE = true},
    TRANSPORT_EXCEPTION = {GET_FILE = true},
    XFER_IN_PROGRESS = {GET_FILE = true},
    EVENT_XFER_ACK = {EVENT_XFER_COMPLETE = true},
    SOFTWARE_UPDATE_CONFIRM = {UPDATE_SOFTWARE = true},
    CONFIGURATION_UPDATE_ERROR = {UPDATE_CONFIGURATION = true},
}
local dialects = {
    GET_XML = "1.0", XML = "1.0",
    GET_EVENT_LIST = "2.0", EVENT_LIST = "2.0", NEXT_EVENT = "2.0", EVENT = "2.0", EVENT_XFER_ACK = "2.0",
    INVALID_EVENT = "2.0", TRANSPORT_EXCEPTION = "2.0", XFER_IN_PROGRESS = "2.0",
    UPDATE_SOFTWARE = "2.0", SOFTWARE_UPDATE_CONFIRM = "2.0",
    OK = "", GET_FILE = "", FILE_COMPLETE = "", EVENT_XFER_COMPLETE = "", DONE = "",
    UPDATE_CONFIGURATION = "", CONFIGURATION_UPDATE_ERROR = "",
}

-- Just enough XML to find the end of a document and what it holds, in time linear in the text. A message of many
-- segments is looked at again with each of them.

local markup = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}, {"<!", ">"}}

-- Where the markup at `start` ends, unless it is a tag; nil for a tag, false if it does not end.
local function EndOfMarkup(text, start)
    for _, pair in ipairs(markup) do
        if text:sub(start, start + #pair[1] - 1) == pair[1] then
            local _, stop = text:find(pair[2], start + #pair[1], true)
            return stop or false
        end
    end
    return nil
end

-- Where the tag that begins at `start` ends; nil if it does not.
local function EndOfTag(text, start)
    local at = start + 1
    while true do
        at = text:find("[<>\"']", at)
        local byte = at and text:sub(at, at)
        if byte == ">" then
            return at
        elseif not at or byte == "<" then
            return nil
        end
        at = text:find(byte, at + 1, true)
        if not at then
            return nil
        end
        at = at + 1
    end
end

-- Iterates over the tags from `at` on: kind ("open", "close" or "empty"), first byte, last byte.
local function Tags(text, at)
    return function()
        while true do
            local start = text:find("<", at, true)
            local stop = start and EndOfMarkup(text, start)
            if stop == nil and start then
                stop = EndOfTag(text, start)
                at = stop and stop + 1
                if not stop then
                    return nil
                end
                local kind = text:sub(start + 1, start + 1) == "/" and "close"
                return kind or (text:sub(stop - 1, stop - 1) == "/" and "empty") or "open", start, stop
            elseif not stop then
                return nil
            end
            at = stop + 1
        end
    end
end

-- The last byte of the document that the text begins with; nil if it is not complete, or there is none.
local function EndOfDocument(text)
    local depth = 0
    if not text:find("^[ \t\r\n]*<") then
        return nil
    end
    -- While a long document arrives in segments, it is quick to see that the end tag of its first element is missing.
    local first = text:match("^[ \t\r\n]*()<[%w_:]")
    local stop = first and EndOfTag(text, first)
    if stop and text:sub(stop - 1, stop - 1) ~= "/" and
        not text:find("</" .. text:match("^[^%s\"'<>/=]+", first + 1), stop, true) then
        return nil
    end
    for kind, _, stop in Tags(text, 1) do
        depth = depth + (kind == "open" and 1 or kind == "close" and -1 or 0)
        if depth <= 0 then
            return stop
        end
    end
    return nil
end

local entities = {lt = "<", gt = ">", amp = "&", quot = '"', apos = "'"}

local function Utf8(code)
    if not code or code == 0 or code > 0x10FFFF then
        return nil
    elseif code < 0x80 then
        return string.char(code)
    end
    local bytes, limit, mark = "", 0x40, 0xC0
    repeat
        bytes = string.char(0x80 + code % 64) .. bytes
        code = math.floor(code / 64)
        limit = limit / 2 -- what the first byte can hold, beside its mark
        mark = limit < 0x20 and mark + limit * 2 or mark
    until code < limit
    return string.char(mark + code) .. bytes
end

local function Unescaped(text)
    return (text:gsub("&(#?)(%w+);", function(number, name)
        if number == "" then
            return entities[name]
        end
        local hexadecimal = name:match("^x(%x+)$")
        return Utf8(hexadecimal and tonumber(hexadecimal, 16) or name:match("^%d+$") and tonumber(name))
    end))
end

-- Text between tags; CDATA sections are taken literally.
local function Content(text)
    local parts = {}
    local at = 1
    while true do
        local start, open = text:find("<![CDATA[", at, true)
        local close, stop = text:find("]]>", open and open + 1 or #text + 1, true)
        if not close then
            parts[#parts + 1] = Unescaped(text:sub(at))
            return table.concat(parts)
        end
        parts[#parts + 1] = Unescaped(text:sub(at, start - 1)) .. text:sub(open + 1, close - 1)
        at = stop + 1
    end
end

-- Calls take(name, value, first byte, last byte) for each attribute of the tag between `start` and `stop`.
local function Attributes(text, start, stop, take)
    local _, at = text:find("^<[^%s\"'<>/=]*", start)
    while at do
        local first, quoteAt, name, quote = text:find("^([^%s\"'<>/=]+)%s*=%s*([\"'])", text:find("%S", at + 1) or stop)
        at = quote and text:find(quote, quoteAt + 1, true)
        if at and at <= stop then
            take(name, Unescaped(text:sub(quoteAt + 1, at - 1)), first, at)
        end
    end
end

-- Calls take(name, content, first byte, last byte, whether it has elements in it) for each element below the document's
-- own, as it ends; the bytes are those of the content.
local function Elements(text, take)
    local open = {}
    for kind, start, stop in Tags(text, 1) do
        local element = {name = text:match("^</?([^%s\"'<>/=]*)", start), first = stop + 1, last = stop}
        if #open > 0 and kind ~= "close" then
            open[#open].parent = true
        end
        if kind == "open" then
            open[#open + 1] = element
        elseif kind == "close" and #open > 0 then
            element = table.remove(open)
            element.last = start - 1
        end
        if kind ~= "open" and #open > 0 then
            local content = element.parent and "" or Content(text:sub(element.first, element.last))
            take(element.name, content, element.first, element.last, element.parent)
        end
    end
end

-- Frames.

-- @return the length that the prefix at `first` announces and the number of its bytes; nil if it is not all there;
--         false if it goes on after its fifth byte
local function Prefix(bytes, first)
    local length = 0
    for index = 0, 4 do
        local byte = bytes:byte(first + index)
        if not byte then
            return nil
        end
        length = length + byte % 128 * 2 ^ (7 * index)
        if byte < 128 then
            return math.floor(length % 2 ^ 32), index + 1
        end
    end
    return false
end

-- The length of the text at the start of `rest`, all bytes at hand after its prefix; nil if it is only partly there.
local function ActualLength(rest, announced)
    local stop = EndOfDocument(rest)
    if not stop then
        return #rest >= announced and announced or nil
    elseif stop > announced then
        return stop == #rest and stop or announced -- else the document would take in the next frame
    end
    local other = rest:find("[^ \t\r\n]", stop + 1) or #rest + 1
    if other > announced then
        return announced -- white space after the document
    end
    return (other <= #rest or stop == #rest) and stop or nil
end

-- @return the frame at `first`: all positions count from 1 and its text is that at hand; nil if it is only partly there
--         and `more` may come; false if there is none
local function Frame(bytes, first, more)
    local announced, size = Prefix(bytes, first)
    if announced == nil and more then
        return nil
    elseif not announced or announced >= 2 ^ 31 then
        return false, announced and experts.huge or announced == false and experts.bad or experts.cut
    end
    local rest = bytes:sub(first + size)
    local actual = ActualLength(rest, announced)
    if rest:sub(1, announced):find("^[ \t\r\n]*[^ \t\r\n<]") and #rest ~= announced then
        return false, more and experts.document or experts.cut
    elseif not actual and more then
        return nil
    end
    local cut = not actual
    actual = actual or #rest
    return {first = first, size = size, announced = announced, actual = actual, cut = cut, text = rest:sub(1, actual)}
end

-- Conversations: what is known of each message when it was first seen, and how messages belong together.

local messages = {} -- by place: frame number, offset, size of the buffer
local conversations = {} -- by number of the TCP stream: dialect, requests without response

function velloran.init()
    messages = {}
    conversations = {}
end

-- The open request that a response answers: the oldest that fits, as a DVR answers in order, except that
-- XFER_IN_PROGRESS answers the newest. A request about the same event and file is preferred.
local function TakeRequest(open, response)
    local best, bestFit
    for index, request in ipairs(open) do
        if answers[response.req][request.req] then
            local fit = (request.event == response.event and 2 or 0) + (request.file == response.file and 1 or 0)
            if not best or fit > bestFit or fit == bestFit and response.req == "XFER_IN_PROGRESS" then
                best, bestFit = index, fit
            end
        end
    end
    return best and table.remove(open, best)
end

local function IsRequest(message)
    for _, requests in pairs(answers) do
        if requests[message.req] then
            -- A 1.0 harness reports all events at once, and nobody answers that.
            return not (message.req == "EVENT_XFER_COMPLETE" and message.dialect == "1.0")
        end
    end
    return false
end

local function DialectOf(message, conversation)
    local known = dialects[message.req]
    local dialect = message.protocolVersion or known and known ~= "" and known
    if not dialect and message.sender == "harness" and known then
        dialect = "1.0" -- in 2.0 it says so in every message
    end
    conversation.dialect = conversation.dialect or dialect
    return dialect or conversation.dialect
end

local function Remember(place, message, conversation)
    if messages[place] then
        return messages[place]
    end
    messages[place] = message
    message.conversation = conversation
    message.dialect = DialectOf(message, conversation)
    if message.sender == "harness" and IsRequest(message) then
        message.isRequest = true
        table.insert(conversation.open, message)
    elseif message.sender == "DVR" and answers[message.req] then
        message.request = TakeRequest(conversation.open, message)
        if message.request then
            message.request.response = message
        end
    end
    return message
end

-- What is shown.

local xml = Dissector.get("xml")

-- Wireshark gives up on a packet that calls 500 dissectors.
local mostDocuments = 150
local documents = 0 -- shown as XML so far, of those at hand

-- Shows a document as XML. Its dissector may fail on what is not a document; what it has shown by then stays.
local function ShowXml(item, pinfo, tvb)
    documents = documents + 1
    if documents > mostDocuments then
        item:append_text(" [one of too many to show as XML]")
    elseif not pcall(xml.call, xml, tvb, pinfo, item) then
        item:add_proto_expert_info(experts.document)
    end
end

local function ShowEmbedded(item, pinfo, text, title)
    if #text > 0 then
        ShowXml(item, pinfo, ByteArray.new(text, true):tvb(title))
    end
end

local function ShowDescription(item, pinfo, range, text)
    for kind, start, stop in Tags(text, 1) do
        if kind ~= "close" then
            Attributes(text, start, stop, function(name, value)
                local field = name == "reid" and fields.describedEvent or name == "name" and fields.describedFile
                if field then
                    item:add(field, range, value):set_generated()
                end
            end)
        end
    end
    ShowEmbedded(item, pinfo, text, "Description")
end

-- The attributes that the Info column has.
local isShort = {reid = true, path = true, file = true, source = true, rehash = true, length = true, duration = true}

local function ShowAttribute(tree, pinfo, range, name, value)
    local field = attributes[name]
    if name == "length" or name == "duration" then
        if value:find("^%d+$") and #value <= 15 then
            tree:add(field, range, UInt64.new(tonumber(value)))
            return
        end
        field = nil
    end
    local item = field and tree:add(field, range, value) or tree:add(fields.attribute, range, name .. "=" .. value)
    if name == "length" or name == "duration" then
        item:add_proto_expert_info(experts.number)
    elseif name == "txt" or name == "message" then
        ShowEmbedded(item, pinfo, value, "Configuration")
    end
end

-- Shows what the text holds. @return what must be remembered of it: req, protocolVersion, event, file, summary
local function ShowContent(tree, pinfo, text, isComplete, range)
    local message = {summary = isComplete and "no msg" or "no document"}
    local kind, start, stop = Tags(text, 1)()
    if not kind or text:match("^<([^%s\"'<>/=]*)", start) ~= "msg" then
        if isComplete then
            tree:add_proto_expert_info(experts.msg)
        end
        return message
    end
    local summary = {}
    Attributes(text, start, stop, function(name, value, first, last)
        if name == "req" then
            message.req = value
            local item = tree:add(fields.req, range(first, last), value)
            if not dialects[value] then
                item:add_proto_expert_info(experts.unknown)
            end
            return
        end
        ShowAttribute(tree, pinfo, range(first, last), name, value)
        if name == "protocolVersion" then
            message.protocolVersion = value
        elseif isShort[name] and not (name == "path" and message.event == value) then
            summary[#summary + 1] = name .. "=" .. value
        end
        if name == "reid" or name == "path" and not message.event then
            message.event = value
        elseif name == "file" then
            message.file = value
        end
    end)
    if not message.req then
        tree:add_proto_expert_info(experts.unknown, "msg has no req")
    end
    Elements(text, function(name, content, first, last, isParent)
        local field = elements[name]
        local item = field and tree:add(field, range(first, last), content) or
            tree:add(fields.element, range(first, last), name .. "=" .. content)
        if isParent then
            item:set_text((field and "Element " or "Other element ") .. name)
        elseif (name == "xmlFile" or name == "string") and content:find("^%s*<") then
            ShowDescription(item, pinfo, range(first, last), content)
        end
    end)
    table.insert(summary, 1, message.req or "msg without req")
    message.summary = table.concat(summary, " ")
    return message
end

local function ShowLinks(tree, message)
    local other = message.request or message.response
    if other then
        tree:add(message.request and fields.requestIn or fields.responseIn, other.number):set_generated()
    end
    if message.request then
        local time = message.time - other.time
        local seconds = math.floor(time)
        tree:add(fields.time, NSTime.new(seconds, math.floor((time - seconds) * 1e9 + 0.5))):set_generated()
    end
end

-- Shows a frame. @return its line for the Info column
local function ShowFrame(frame, tvb, pinfo, tree)
    local textAt = frame.first - 1 + frame.size
    local root = tree:add(velloran, tvb(frame.first - 1, frame.size + #frame.text))
    local function Range(first, last) -- of the text; an empty one has no bytes
        return tvb(textAt + first - 1, math.max(last - first + 1, 0))
    end
    local prefix = root:add(fields.prefix, tvb(frame.first - 1, frame.size))
    prefix:add(fields.announced, tvb(frame.first - 1, frame.size), frame.announced)
    prefix:add(fields.actual, Range(1, #frame.text), frame.actual):set_generated()
    local note = ""
    if frame.cut then
        root:add_proto_expert_info(experts.cut)
        note = " [cut]"
    elseif frame.announced ~= frame.actual then
        note = (" [announced %d, actual %d]"):format(frame.announced, frame.actual)
        prefix:add_proto_expert_info(experts.mismatch, "The prefix announces " .. frame.announced ..
                                     " bytes, the text has " .. frame.actual)
    end
    local isComplete = EndOfDocument(frame.text)
    if not isComplete and not frame.cut then
        root:add_proto_expert_info(experts.document)
    end
    root:add(fields.text, Range(1, #frame.text))

    local message = ShowContent(root, pinfo, frame.text, isComplete, Range)
    message.number = pinfo.number
    message.time = pinfo.rel_ts
    message.sender = pinfo.src_port == pinfo.match_uint and "harness" or "DVR"
    local number = stream() and stream().value or 0
    conversations[number] = conversations[number] or {open = {}}
    message = Remember(("%d.%d.%d"):format(pinfo.number, frame.first, tvb:len()), message, conversations[number])
    root:add(fields.sender, message.sender):set_generated()
    local dialect = message.dialect or message.conversation.dialect
    if dialect then
        root:add(fields.dialect, dialect):set_generated()
    end
    ShowLinks(root, message)
    if pinfo.visited and message.isRequest and not message.response then
        root:add_proto_expert_info(experts.unanswered)
    end
    if isComplete then
        ShowXml(root, pinfo, Range(1, #frame.text):tvb())
    end
    root:append_text(", " .. message.summary .. note)
    return message.summary .. note
end

function velloran.dissector(tvb, pinfo, tree)
    local bytes = tvb:raw()
    local more = pinfo.can_desegment > 0 and tvb:len() == tvb:reported_len()
    local lines = {}
    local at = 1
    documents = 0
    while at <= #bytes do
        local frame, reason = Frame(bytes, at, more)
        if frame == nil then
            pinfo.desegment_offset = at - 1
            pinfo.desegment_len = DESEGMENT_ONE_MORE_SEGMENT
            break
        elseif not frame then
            local root = tree:add(velloran, tvb(at - 1))
            root:add(fields.unreadable, tvb(at - 1)):add_proto_expert_info(reason)
            lines[#lines + 1] = "unreadable"
            break
        end
        lines[#lines + 1] = ShowFrame(frame, tvb, pinfo, tree)
        at = at + frame.size + #frame.text
    end
    if #lines > 0 then
        pinfo.cols.protocol = "Velloran"
        pinfo.cols.info = table.concat(lines, "; ")
        pinfo.cols.info:fence()
    end
    return tvb:len()
end

DissectorTable.get("tcp.port"):add(5001, velloran)
