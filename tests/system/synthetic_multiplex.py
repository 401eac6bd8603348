"""A multiplex of any number of services with any names, for pages that must stay readable.

Each service has a video stream with the PCR, two audio streams, teletext and ECMs; every third is scrambled. Sections
are written with samples/dvb.py, which has to be on the path.
"""

import datetime

import dvb

PAT_PID, SDT_PID, EIT_PID, TDT_PID, NULL_PID = 0, 0x11, 0x12, 0x14, 0x1FFF
NETWORK, STREAM = 0xFF01, 77
NOON = datetime.datetime(2024, 2, 29, 12)
ROUNDS, ROUND_TICKS = 12, 27_000_000 // 25
UTF_8 = b"\x15"


class Multiplex:
    def __init__(self, names):
        self.services = list(enumerate(names, start=1))
        self.listed = []  # further services, number and name, that the SDT alone has
        self.strays = []  # PIDs in no table
        self.packets = []
        self.counters = {}

    def packet(self, pid, payload, start=False, flags=0, pcr=b"", scrambled=False):
        counter = self.counters.get(pid, 0)
        self.counters[pid] = (counter + 1) % 16
        packet = bytearray(dvb.ts_packet(pid, counter, payload, start, flags, pcr))
        packet[3] |= 0x80 if scrambled else 0
        self.packets.append(bytes(packet))

    def section(self, pid, section):
        data = b"\0" + section
        for at in range(0, len(data), 184):
            self.packet(pid, data[at:at + 184], start=at == 0)

    def sections(self, pid, table_id, extension, bodies):
        for number, body in enumerate(bodies):
            self.section(pid, dvb.SectionBuilder(table_id, extension, 3, len(bodies) - 1).build(body, number))

    def pmt_pid(self, service):
        return 0x20 + 8 * service

    def tables(self):
        entries = [dvb.u16(service, 0xE000 | self.pmt_pid(service)) for service, _ in self.services]
        self.sections(PAT_PID, 0x00, STREAM, chunks(entries, 200) or [b""])
        entries = [dvb.u16(service) + b"\xff" + dvb.loop(service_descriptor(name), 0x8)
                   for service, name in self.services + self.listed]
        self.sections(SDT_PID, 0x42, STREAM, [dvb.u16(NETWORK) + b"\xff" + chunk for chunk in chunks(entries, 8)])
        for service, name in self.services:
            self.sections(self.pmt_pid(service), 0x02, service, [self.pmt(service)])
            self.sections(EIT_PID, 0x4E, service, [eit_body(0x4E, 1, [event(service * 100 + place, place, name)])
                                                   for place in range(2)])
        self.section(TDT_PID, dvb.short_section(0x70, dvb.dvb_time(NOON + datetime.timedelta(minutes=20))))

    def pmt(self, service):
        pid = self.pmt_pid(service)
        language = lambda code: dvb.descriptor(0x0A, code + b"\0")
        streams = [(0x1B, b""), (0x03, language(b"eng")), (0x06, dvb.descriptor(0x6A, b"\0") + language(b"deu")),
                   (0x06, dvb.descriptor(0x56, b"fra\x09\x00"))]
        body = dvb.u16(0xE000 | pid + 1) + dvb.loop(dvb.ca_descriptor(0x0071, pid + 5))
        for place, (stream_type, descriptors) in enumerate(streams):
            body += bytes([stream_type]) + dvb.u16(0xE000 | pid + 1 + place) + dvb.loop(descriptors)
        return body

    def payload(self, round_number):
        for service, _ in self.services:
            pid, scrambled = self.pmt_pid(service), service % 3 == 0
            pcr = dvb.pcr_field(round_number * ROUND_TICKS)
            self.packet(pid + 1, bytes(176), flags=0x10, pcr=pcr)
            for _ in range(1 + service % 5):
                self.packet(pid + 1, bytes(184), scrambled=scrambled)
            for other in (2, 3, 4, 5):
                self.packet(pid + other, bytes(184))
        for pid in [*self.strays, NULL_PID]:
            self.packet(pid, bytes(184))

    def write(self, path):
        for round_number in range(ROUNDS):
            if round_number % 6 == 0:
                self.tables()
            self.payload(round_number)
        path.write_bytes(b"".join(self.packets))


def chunks(entries, size):
    return [b"".join(entries[at:at + size]) for at in range(0, len(entries), size)]


def service_descriptor(name):
    return dvb.descriptor(0x48, b"\x19" + dvb.counted(UTF_8 + "Anbieter".encode()) + dvb.counted(UTF_8 + name))


def event(event_id, place, name):
    start = NOON + datetime.timedelta(minutes=45 * place)
    text = dvb.descriptor(0x4D, b"eng" + dvb.counted(UTF_8 + name) + dvb.counted(b""))
    return dvb.u16(event_id) + dvb.dvb_time(start) + bytes.fromhex("004500") + dvb.loop(text, 0x8)


def eit_body(table_id, last_section, entries):
    return dvb.u16(STREAM, NETWORK) + bytes([last_section, table_id]) + b"".join(entries)
