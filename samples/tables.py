"""The tables of the sample multiplex as sections, and when each of them is sent.

ISO/IEC 13818-1 (PSI), ETSI EN 300 468 (SI), ETSI TS 101 211 (repetition rates), ETSI TS 102 809
(application signalling), ISO/IEC 13818-6 (data carousel).
"""

import datetime
import itertools
from dataclasses import dataclass

from contents import (
    APPLICATIONS, BAT_VERSION, BOUQUET_ID, CA_SYSTEM_A, CA_SYSTEM_B, CAT_VERSION, DATA_CAROUSEL,
    ECM_101, ECM_103_AUDIO, ECM_103_VIDEO, EMM_A, EMM_B, NETWORK_ID, NIT_VERSION,
    ORIGINAL_NETWORK_ID, PAT_VERSION, PROVIDER, SDT_VERSION, SERVICES, START_UTC,
    TRANSPORT_STREAM_ID, Programme)
from dvb import (
    CLOCK, SectionBuilder, ca_descriptor, counted, descriptor, dvb_text, dvb_time, loop,
    short_section, u16, with_crc)

PAT_PID, CAT_PID, NIT_PID, SDT_PID, EIT_PID, TDT_PID = 0x00, 0x01, 0x10, 0x11, 0x12, 0x14


def build_pat():
    programmes = [(0, NIT_PID)] + [(service.sid, service.pmt_pid) for service in SERVICES]
    body = b"".join(u16(number, 0xE000 | pid) for number, pid in programmes)
    return SectionBuilder(0x00, TRANSPORT_STREAM_ID, PAT_VERSION).build(body)


def build_cat():
    body = ca_descriptor(CA_SYSTEM_A, EMM_A) + ca_descriptor(CA_SYSTEM_B, EMM_B, b"\x01\x02")
    return SectionBuilder(0x01, 0xFFFF, CAT_VERSION).build(body)


def build_pmt(service, now):
    """The PMT at a time; each stream that begins later makes a version of its own."""
    streams = service.streams_at(now)
    body = u16(0xE000 | service.streams[0].pid) + loop(service.ca)
    for stream in streams:
        body += bytes([stream.stream_type]) + u16(0xE000 | stream.pid) + loop(stream.descriptors)
    version = service.pmt_version + len(streams) - len(service.streams_at(0))
    return SectionBuilder(0x02, service.sid, version).build(body)


def build_sdt():
    body = u16(ORIGINAL_NETWORK_ID) + b"\xff"
    for service in SERVICES:
        names = counted(PROVIDER.encode()) + counted(dvb_text(service.name, service.charset))
        descriptors = descriptor(0x48, bytes([service.service_type]) + names)
        body += u16(service.sid) + b"\xff" + loop(descriptors, 4 << 1 | service.free_ca)
    return SectionBuilder(0x42, TRANSPORT_STREAM_ID, SDT_VERSION).build(body)


def build_network_or_bouquet(table_id, extension, version, name, extra=b""):
    """A NIT or a BAT, which share their form; `extra` goes into the transport stream's loop."""
    listed = b"".join(u16(service.sid) + bytes([service.service_type]) for service in SERVICES)
    stream = u16(TRANSPORT_STREAM_ID, ORIGINAL_NETWORK_ID) + loop(descriptor(0x41, listed) + extra)
    return SectionBuilder(table_id, extension, version).build(loop(name) + loop(stream))


def build_nit():
    """With a cable delivery system: 306 MHz, 64-QAM, 6.875 Mbaud."""
    cable = descriptor(0x44, bytes.fromhex("03060000" "FFF2" "03" "0068750F"))
    name = descriptor(0x40, b"Sample Network")
    return build_network_or_bouquet(0x40, NETWORK_ID, NIT_VERSION, name, cable)


def build_bat():
    name = descriptor(0x47, b"Sample Bouquet")
    return build_network_or_bouquet(0x4A, BOUQUET_ID, BAT_VERSION, name)


def utc_at(now):
    return START_UTC + datetime.timedelta(seconds=now // CLOCK)


def build_tdt(now):
    return short_section(0x70, dvb_time(utc_at(now)))


def build_tot(now):
    """The time with Spain's offset of two hours, one hour from 27 October on; it has a CRC."""
    winter = dvb_time(datetime.datetime(2024, 10, 27, 1))
    offset = descriptor(0x58, b"ESP\x02" + bytes.fromhex("0200") + winter + bytes.fromhex("0100"))
    body = dvb_time(utc_at(now)) + loop(offset)
    return with_crc(bytes([0x73]) + u16(0x7000 | len(body) + 4) + body)


@dataclass(frozen=True)
class Event:
    """A programme at its place in the guide."""

    event_id: int
    start: datetime.datetime
    programme: Programme

    @property
    def end(self):
        return self.start + datetime.timedelta(minutes=self.programme.minutes)


def events_of(service):
    """The service's events from noon until midnight."""
    noon = START_UTC.replace(hour=12, minute=0, second=0)
    events = []
    for number, programme in enumerate(itertools.cycle(service.programmes)):
        start = events[-1].end if events else noon
        if start.date() != noon.date():
            return events
        events.append(Event(service.sid * 100 + number, start, programme))


def event_entry(service, event, running_status):
    programme = event.programme
    language = service.language.encode()

    def text(value):
        return counted(dvb_text(value, service.charset))

    descriptors = descriptor(0x4D, language + text(programme.title) + text(programme.text))
    if programme.details:
        descriptors += descriptor(0x4E, b"\0" + language + b"\0" + text(programme.details))
    descriptors += descriptor(0x54, bytes([programme.genre, 0]))
    duration = bytes.fromhex("%02d%02d00" % divmod(programme.minutes, 60))
    entry = u16(event.event_id) + dvb_time(event.start) + duration
    return entry + loop(descriptors, running_status << 1 | service.free_ca)


def eit_body(entries, segment_last_number, last_table_id):
    ids = u16(TRANSPORT_STREAM_ID, ORIGINAL_NETWORK_ID)
    return ids + bytes([segment_last_number, last_table_id]) + b"".join(entries)


def build_eit_present_following(service, number, now):
    """Section 0 is the present event, 1 the following; a new present event makes a new version."""
    events = events_of(service)
    first, present = (
        next(i for i, event in enumerate(events) if event.end > utc_at(when)) for when in (0, now))
    running_status = 1 if number else 4
    entry = event_entry(service, events[present + number], running_status)
    builder = SectionBuilder(0x4E, service.sid, service.eit_version + present - first, 1)
    return builder.build(eit_body([entry], 1, 0x4E), number)


def build_eit_schedule(service):
    """All sections of the day's table 0x50: eight segments of three hours, eight numbers each.

    A segment uses as many numbers as it needs, at least one, so the numbers have gaps; the
    segments that have passed are empty.
    """
    segments = [[] for _ in range(8)]
    for event in events_of(service):
        segments[event.start.hour // 3].append(event_entry(service, event, 0))
    split = [[entries[i:i + 2] for i in range(0, max(len(entries), 1), 2)] for entries in segments]
    builder = SectionBuilder(0x50, service.sid, service.schedule_version, 56 + len(split[7]) - 1)
    return [
        builder.build(eit_body(entries, 8 * segment + len(sections) - 1, 0x50), 8 * segment + i)
        for segment, sections in enumerate(split) for i, entries in enumerate(sections)]


def build_filler(table_id, pid, period):
    """An ECM or EMM as it looks on the wire: bytes that mean nothing to anybody."""
    return short_section(table_id, bytes((pid + 7 * period + 13 * i) & 0xFF for i in range(48)))


def build_ecm(pid, now):
    """The table id alternates with every key period of two seconds."""
    period = now // (2 * CLOCK)
    return build_filler(0x80 + period % 2, pid, period)


def build_emm(pid, now):
    return build_filler(0x82, pid, now // (CLOCK // 5))


def build_application_table():
    """An application information table of the interactive kind, without applications."""
    return SectionBuilder(0x74, 0x0010, 0).build(loop(b"") + loop(b""))


def build_server_initiate():
    """A data carousel's DownloadServerInitiate without groups (ISO/IEC 13818-6)."""
    message = b"\xff" * 20 + u16(0, 0)
    header = b"\x11\x03" + u16(0x1006) + b"\x80\x00\x00\x00\xff\x00" + u16(len(message))
    return SectionBuilder(0x3B, 0x0000, 0).build(header + message)


def section_timetable():
    """Rows of PID, interval and first time in milliseconds, and what makes the section then."""
    rows = [
        (PAT_PID, 80, 0, lambda now: build_pat()),
        (CAT_PID, 400, 5, lambda now: build_cat()),
        (NIT_PID, 1000, 420, lambda now: build_nit()),
        (SDT_PID, 1000, 15, lambda now: build_sdt()),
        (SDT_PID, 2000, 720, lambda now: build_bat()),
        (TDT_PID, 2000, 0, build_tot),
        (TDT_PID, 2000, 1000, build_tdt),
        (APPLICATIONS.pid, 500, 130, lambda now: build_application_table()),
        (DATA_CAROUSEL.pid, 500, 370, lambda now: build_server_initiate()),
    ]
    for i, service in enumerate(SERVICES):
        rows.append((service.pmt_pid, 80, 15 * i + 10, lambda now, s=service: build_pmt(s, now)))
        for number in (0, 1):
            rows.append((EIT_PID, 1000, 110 * (2 * i + number) + 35, lambda now, s=service,
                         n=number: build_eit_present_following(s, n, now)))
    for i, pid in enumerate((ECM_101, ECM_103_VIDEO, ECM_103_AUDIO)):
        rows.append((pid, 100, 20 * i + 25, lambda now, p=pid: build_ecm(p, now)))
    for i, pid in enumerate((EMM_A, EMM_B)):
        rows.append((pid, 200, 90 * i + 60, lambda now, p=pid: build_emm(p, now)))
    schedule = itertools.cycle(sum((build_eit_schedule(service) for service in SERVICES), []))
    rows.append((EIT_PID, 50, 40, lambda now: next(schedule)))
    return rows
