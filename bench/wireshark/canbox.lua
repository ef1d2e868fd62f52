-- Dissector of the line between a decoder box and a head unit, for recordings that
-- `canbench export --format pcapng` has written: link type USER0, a packet for each chunk, and in the
-- packet flags its direction, inbound from the box. In front of this file stand kReports, kCommands
-- and the bytes of the frame, as the bench states them.

local canbox = Proto("canbox", "CAN decoder box")

canbox.prefs.two_codes = Pref.bool("Two codes per parking sensor", false,
    "Cars whose bumpers report two codes per sensor, of which the smaller counts")

-- Fields -------------------------------------------------------------------------------------------

local typeNames = {}
for dataType, report in pairs(kReports) do typeNames[dataType] = report.name end
for dataType, name in pairs(kCommands) do typeNames[dataType] = name end

local fields = {
    from_box = ProtoField.bool("canbox.from_box", "From the box"),
    frame = ProtoField.bytes("canbox.frame", "Frame"),
    type = ProtoField.uint8("canbox.type", "Type", base.HEX, typeNames),
    length = ProtoField.uint8("canbox.length", "Length"),
    payload = ProtoField.bytes("canbox.payload", "Payload", base.SPACE),
    checksum = ProtoField.uint8("canbox.checksum", "Checksum", base.HEX),
    checksum_good = ProtoField.bool("canbox.checksum_good", "Checksum is good"),
    receipt = ProtoField.uint8("canbox.receipt", "Receipt", base.HEX,
        {[kReceiptGood] = "good", [kReceiptBad] = "bad"}),
    noise = ProtoField.bytes("canbox.noise", "Noise", base.SPACE),
    given_up = ProtoField.bytes("canbox.given_up", "Frame given up", base.SPACE),
    open = ProtoField.bytes("canbox.open", "Frame goes on in a later packet", base.SPACE),
    version = ProtoField.string("canbox.version", "version"),
}

-- The type of the field shows how it is filtered: canbox.door.rear == 1, canbox.unit.pressure == "bar",
-- canbox.climate.left > 21.
local function valueField(field)
    local filter = "canbox." .. field.name
    if field.isChoice then
        if field.bits > 1 then
            return ProtoField.uint8(filter, field.name, base.DEC, field.words)
        end
        -- On is true, though the bit may say what is off.
        field.isSwitch = true
        field.onRaw = field.words[0] == "on" and 0 or 1
        return ProtoField.bool(filter, field.name, base.NONE,
            {field.words[field.onRaw], field.words[1 - field.onRaw]})
    end
    local unit = field.unit ~= "" and {" " .. field.unit} or nil
    field.isDouble = field.scale ~= 1 or field.offset ~= 0
    if field.isDouble then
        return ProtoField.double(filter, field.name)
    end
    return ProtoField.uint32(filter, field.name, unit and base.UNIT_STRING or base.DEC, unit)
end

for dataType, report in pairs(kReports) do
    for _, field in ipairs(report.fields) do
        field.proto = valueField(field)
        fields[field.name] = field.proto
        if not field.isChoice and next(field.words) then
            -- What stands for the number, so that no plot has it as one.
            field.word = ProtoField.string("canbox." .. field.name .. ".word", field.name)
            fields[field.name .. ".word"] = field.word
        end
    end
end
canbox.fields = fields

local experts = {
    bad_checksum = ProtoExpert.new("canbox.bad_checksum", "Bad checksum",
        expert.group.CHECKSUM, expert.severity.ERROR),
    given_up = ProtoExpert.new("canbox.frame_given_up", "Frame given up",
        expert.group.REASSEMBLE, expert.severity.WARN),
    noise = ProtoExpert.new("canbox.noise_between", "Noise between frames",
        expert.group.PROTOCOL, expert.severity.WARN),
    bad_receipt = ProtoExpert.new("canbox.bad_receipt", "Bad receipt",
        expert.group.RESPONSE_CODE, expert.severity.WARN),
    resent = ProtoExpert.new("canbox.resent", "Sent again after a bad checksum",
        expert.group.SEQUENCE, expert.severity.NOTE),
    wrong_size = ProtoExpert.new("canbox.wrong_size", "The service drops this report for its length",
        expert.group.PROTOCOL, expert.severity.WARN),
    link_lost = ProtoExpert.new("canbox.link_lost", "The link was lost: no good frame from the box in 31.2 s",
        expert.group.SEQUENCE, expert.severity.ERROR),
}
canbox.experts = experts

-- Cutting ------------------------------------------------------------------------------------------

-- All times in microseconds.
local kFrameTimeout = 500000
local kResendTime = 1000000
local kLinkTimeout = 31200000

local lines   -- What each direction has open.
local link    -- When it was last alive, if it is.
local packets -- What each packet has, by its number: packets are read in order once, then in any.
local latest  -- Time never goes back: an earlier one counts as the latest.

function canbox.init()
    local function line(fromBox)
        return {fromBox = fromBox, open = "", lastByte = 0, damaged = {}}
    end
    lines, link, packets, latest = {[true] = line(true), [false] = line(false)}, {}, {}, 0
end

local function sum(bytes, first, last)
    local total = 0
    for at = first, last do total = total + bytes:byte(at) end
    return bit32.band(bit32.bnot(total), 0xFF)
end

-- Whether the bytes of a frame, from its head on, are all of it. The service never ends a frame of
-- length 0, which swallows what follows until it is given up; a box takes it as a frame.
local function isWhole(line, bytes)
    if #bytes < 4 then return false end
    local length = bytes:byte(3)
    return #bytes == length + 4 and (length > 0 or not line.fromBox)
end

-- The service gives a frame up that a chunk finds open, 500 ms after that chunk, unless a good frame
-- ends before. A box gives it up after 500 ms without a byte.
local function giveUpLate(line, now, items)
    local isLate
    if line.fromBox then
        isLate = line.giveUpAt and now >= line.giveUpAt
    else
        isLate = now - line.lastByte > kFrameTimeout
    end
    if isLate then
        line.giveUpAt = nil
        if #line.open > 0 then
            items[#items + 1] = {kind = "given_up", bytes = line.open}
            line.open = ""
        end
    end
    if line.fromBox and #line.open > 0 and not line.giveUpAt then
        line.giveUpAt = now + kFrameTimeout
    end
    line.lastByte = now
end

local function endFrame(line, now, item)
    item.good = sum(item.bytes, 2, #item.bytes - 1) == item.bytes:byte(#item.bytes)
    if not line.fromBox then return end
    local dataType = item.bytes:byte(2)
    if not item.good then
        line.damaged[dataType] = now
        return
    end
    line.giveUpAt = nil
    link.alive = now
    if line.damaged[dataType] then
        item.resent = now - line.damaged[dataType] <= kResendTime
        line.damaged[dataType] = nil
    end
end

-- Cuts a chunk into items {kind, bytes, at}: where it begins in the chunk, from 0 on; frames that
-- began in an earlier chunk have none.
local function cut(line, chunk, now)
    local items = {}
    giveUpLate(line, now, items)
    if link.alive and now - link.alive >= kLinkTimeout then
        items.linkLost = true
        link.alive = nil
    end
    local openAt = nil
    local noiseAt = nil
    local function flushNoise(to)
        if noiseAt then
            items[#items + 1] = {kind = "noise", bytes = chunk:sub(noiseAt, to), at = noiseAt - 1}
            noiseAt = nil
        end
    end
    for at = 1, #chunk do
        local byte = chunk:byte(at)
        local isReceipt = not line.fromBox and (byte == kReceiptGood or byte == kReceiptBad)
        if #line.open > 0 then
            line.open = line.open .. chunk:sub(at, at)
            if isWhole(line, line.open) then
                local item = {kind = "frame", bytes = line.open, at = openAt}
                line.open = ""
                endFrame(line, now, item)
                items[#items + 1] = item
            end
        elseif byte == kHead then
            flushNoise(at - 1)
            line.open = chunk:sub(at, at)
            openAt = at - 1
        elseif isReceipt then
            flushNoise(at - 1)
            items[#items + 1] = {kind = "receipt", bytes = chunk:sub(at, at), at = at - 1}
        else
            noiseAt = noiseAt or at
        end
    end
    flushNoise(#chunk)
    if #line.open > 0 then
        items[#items + 1] = {kind = "open", bytes = line.open, at = openAt}
    end
    return items
end

local function itemsOf(number, chunk, pinfo, fromBox)
    if packets[number] then return packets[number] end
    latest = math.max(latest, math.floor(pinfo.abs_ts * 1e6 + 0.5))
    packets[number] = cut(lines[fromBox], chunk, latest)
    return packets[number]
end

-- Showing ------------------------------------------------------------------------------------------

local function rawOf(field, payload)
    if field.pair and canbox.prefs.two_codes then
        return math.min(payload(field.pair[1], 1):uint(), payload(field.pair[2], 1):uint())
    end
    local bytes = math.floor((field.bits + 7) / 8)
    local raw = payload(field.byte, bytes):uint()
    return bit32.band(bit32.rshift(raw, field.shift), 2 ^ field.bits - 1), payload(field.byte, bytes)
end

local function addValue(tree, field, payload)
    if field.selector and payload(0, 1):uint() ~= field.selector then return end
    local raw, range = rawOf(field, payload)
    range = range or payload
    if field.isSwitch then
        tree:add(field.proto, range, raw == field.onRaw)
    elseif field.word and field.words[raw] then
        tree:add(field.word, range, field.words[raw])
    else
        local line = tree:add(field.proto, range, field.offset + raw * field.scale)
        if field.isDouble then line:append_text(" " .. field.unit) end
    end
end

local function addValues(tree, report, payload)
    if report.size == kAnySize then
        local size = #payload:raw():match("^[^\0]*")
        tree:add(fields.version, payload, size > 0 and payload(0, size):string(ENC_UTF_8) or "")
        return
    end
    for _, field in ipairs(report.fields) do addValue(tree, field, payload) end
end

-- The bytes of an item as a range, in the packet if all of them are there.
local function rangeOf(buffer, item)
    if item.at then return buffer(item.at, #item.bytes) end
    return ByteArray.new(item.bytes, true):tvb("Joined frame")()
end

local show = {}

function show.frame(tree, buffer, item, fromBox)
    local range = rangeOf(buffer, item)
    local dataType, length = range(1, 1):uint(), range(2, 1):uint()
    local report = fromBox and kReports[dataType] or nil
    local name = report and report.name or not fromBox and kCommands[dataType] or "unknown"
    local branch = tree:add(fields.frame, range)
    branch:set_text(string.format("0x%02X %s", dataType, name))
    branch:add(fields.type, range(1, 1))
    branch:add(fields.length, range(2, 1))
    if length > 0 then branch:add(fields.payload, range(3, length)) end
    local checksum = branch:add(fields.checksum, range(3 + length, 1))
    branch:add(fields.checksum_good, range(3 + length, 1), item.good):set_generated()
    if not item.good then
        checksum:append_text(string.format(" instead of 0x%02x", sum(item.bytes, 2, #item.bytes - 1)))
        branch:add_proto_expert_info(experts.bad_checksum)
        branch:append_text(", bad checksum")
        return name .. " (bad checksum)"
    end
    if item.resent then branch:add_proto_expert_info(experts.resent) end
    if report and report.size ~= kAnySize and report.size ~= length then
        branch:add_proto_expert_info(experts.wrong_size)
        return name .. " (wrong length)"
    end
    if report and length > 0 then addValues(branch, report, range(3, length)) end
    return item.resent and name .. " (sent again)" or name
end

function show.receipt(tree, buffer, item)
    local range = rangeOf(buffer, item)
    local line = tree:add(fields.receipt, range)
    if range:uint() == kReceiptGood then return "good receipt" end
    line:add_proto_expert_info(experts.bad_receipt)
    return "bad receipt"
end

function show.noise(tree, buffer, item)
    tree:add(fields.noise, rangeOf(buffer, item)):add_proto_expert_info(experts.noise)
    return "noise"
end

function show.given_up(tree, buffer, item)
    tree:add(fields.given_up, rangeOf(buffer, item)):add_proto_expert_info(experts.given_up)
    return "frame given up"
end

function show.open(tree, buffer, item)
    tree:add(fields.open, rangeOf(buffer, item)):set_generated()
    return "..."
end

function canbox.dissector(buffer, pinfo, root)
    local fromBox = pinfo.p2p_dir == P2P_DIR_RECV -- From the packet flags.
    local items = itemsOf(pinfo.number, buffer:raw(), pinfo, fromBox)
    pinfo.cols.protocol = "canbox"
    pinfo.cols.src = fromBox and "box" or "host"
    pinfo.cols.dst = fromBox and "host" or "box"
    local tree = root:add(canbox, buffer())
    tree:add(fields.from_box, fromBox):set_generated()
    local words = {}
    if items.linkLost then
        tree:add_proto_expert_info(experts.link_lost)
        words[1] = "link lost"
    end
    for _, item in ipairs(items) do
        words[#words + 1] = show[item.kind](tree, buffer, item, fromBox)
    end
    pinfo.cols.info = table.concat(words, ", ")
    return buffer:len()
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, canbox)
