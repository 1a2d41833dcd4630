#!/usr/bin/env python3
"""The smallest backend that a user would write instead of the harness: one plain 2.0 export, on port 5001.

Asks for the list, each event and each file, acknowledges, ends with DONE. No switches, no checks, no pauses.
"""
import socket
import sys
import xml.etree.ElementTree as xml


def receive(stream):
    length = shift = 0
    while True:
        byte = stream.read(1)
        if not byte:
            sys.exit(0)
        length |= (byte[0] & 0x7F) << shift
        shift += 7
        if byte[0] < 0x80:
            return xml.fromstring(stream.read(length))


def send(connection, req, **attributes):
    text = xml.tostring(xml.Element('msg', req=req, protocolVersion='2.0', **attributes))
    prefix = bytearray()
    length = len(text)
    while length > 127:
        prefix.append(length & 0x7F | 0x80)
        length >>= 7
    prefix.append(length)
    connection.sendall(bytes(prefix) + text)


def serve(connection):
    stream = connection.makefile('rb')
    events, files = [], []
    while True:
        message = receive(stream)
        req = message.get('req')
        if req == 'OK':
            send(connection, 'GET_EVENT_LIST')
            continue
        if req == 'EVENT_LIST':
            events = [event.text for event in message.find('events')]
        elif req == 'EVENT':
            video = xml.fromstring(message.find('xmlFile').text).find('video')
            files = [file.get('name') for file in video.iter() if file.get('name')]
        elif req == 'FILE_COMPLETE':
            files.pop(0)
        elif req == 'EVENT_XFER_ACK':
            events.pop(0)
        if files:
            send(connection, 'GET_FILE', reid=events[0], path=events[0], file=files[0])
        elif req == 'FILE_COMPLETE':
            send(connection, 'EVENT_XFER_COMPLETE', reid=events[0])
        elif events:
            send(connection, 'NEXT_EVENT', reid=events[0])
        else:
            send(connection, 'DONE')


listener = socket.create_server(('', 5001))
serve(listener.accept()[0])
