"""How the standards write things: text, times, descriptors, sections, transport stream packets.

ISO/IEC 13818-1 (packets and PSI) and ETSI EN 300 468 (SI).
"""

import datetime
import unicodedata

PACKET_SIZE = 188
CLOCK = 90_000  # ticks per second: all times within the stream count in these
MS = CLOCK // 1000

ISO_6937_ACCENTS = {
    "\u0300": 0xC1, "\u0301": 0xC2, "\u0302": 0xC3, "\u0303": 0xC4, "\u0308": 0xC8, "\u0327": 0xCB,
}


def iso_6937(text):
    """The text in ISO/IEC 6937, where an accent stands before its letter."""
    out = bytearray()
    for char in unicodedata.normalize("NFD", text):
        if char in ISO_6937_ACCENTS:
            out.insert(len(out) - 1, ISO_6937_ACCENTS[char])
        else:
            out += char.encode("ascii")
    return bytes(out)


def dvb_text(text, charset):
    """A text field (EN 300 468 annex A): the default table, or ISO 8859-15 with its selector."""
    if text.isascii() or charset == "iso6937":
        return iso_6937(text)
    return b"\x10\x00\x0f" + text.encode(charset)


def u16(*values):
    """Each value in two bytes, high byte first."""
    return b"".join(value.to_bytes(2, "big") for value in values)


def counted(data):
    """The data behind their length in one byte."""
    return bytes([len(data)]) + data


def loop(data, flags=0xF):
    """The data behind four flag bits and their length in twelve bits."""
    return u16(flags << 12 | len(data)) + data


def dvb_time(moment):
    """Modified Julian Date and BCD hours, minutes, seconds (EN 300 468 annex C)."""
    mjd = moment.toordinal() - datetime.date(1858, 11, 17).toordinal()
    return u16(mjd) + bytes.fromhex(moment.strftime("%H%M%S"))


def descriptor(tag, data=b""):
    return bytes([tag]) + counted(data)


def ca_descriptor(system, pid, private=b""):
    return descriptor(0x09, u16(system, 0xE000 | pid) + private)


def stream_identifier(component_tag):
    return descriptor(0x52, bytes([component_tag]))


def crc32(data):
    """The CRC of ISO/IEC 13818-1 annex A."""
    crc = 0xFFFFFFFF
    for byte in data:
        crc ^= byte << 24
        for _ in range(8):
            crc = (crc << 1) ^ (0x04C11DB7 if crc & 0x80000000 else 0)
        crc &= 0xFFFFFFFF
    return crc


def with_crc(section):
    return section + crc32(section).to_bytes(4, "big")


class SectionBuilder:
    """Builds the sections of one sub-table in the long form, with version and CRC.

    The bit after the syntax indicator is 0 in tables of MPEG and 1 in those of DVB.
    """

    MPEG_TABLES = (0x00, 0x01, 0x02, 0x3B)

    def __init__(self, table_id, extension, version, last_number=0):
        self.table_id = table_id
        self.extension = extension
        self.version = version % 32
        self.last_number = last_number

    def build(self, body, number=0):
        flags = 0xB if self.table_id in self.MPEG_TABLES else 0xF
        length = 5 + len(body) + 4
        if length > (1021 if self.table_id < 0x4E else 4093):
            raise ValueError(f"section of table 0x{self.table_id:02X} is too long")
        header = bytes([self.table_id]) + u16(flags << 12 | length, self.extension)
        header += bytes([0xC1 | self.version << 1, number, self.last_number])
        return with_crc(header + body)


def short_section(table_id, body):
    """A section in the short form, which has neither version nor CRC."""
    return bytes([table_id]) + loop(body, 0x7)


def ts_packet(pid, counter, payload, start=False, flags=0, pcr=b""):
    """One packet; an adaptation field with the flags and the PCR fills what the payload leaves."""
    room = PACKET_SIZE - 4 - len(payload)
    control = (0x10 if payload else 0) | (0x20 if room else 0)
    filling = b""
    if room:
        filling = (bytes([room - 1, flags]) + pcr).ljust(room, b"\xff")[:room]
    return b"\x47" + u16(start << 14 | pid) + bytes([control | counter]) + filling + payload


def pcr_field(ticks_27mhz):
    base, extension = divmod(ticks_27mhz, 300)
    return ((base % (1 << 33)) << 15 | 0x7E00 | extension).to_bytes(6, "big")
