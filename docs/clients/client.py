"""Hands a tiny multiplex to tornel, asks for one output and writes its packets to a file.

Usage: client.py PACKETS.ts [MPTS [HOST]]

    thrift -r --gen py -out generated /usr/share/tornel/idl/in_module.thrift
    PYTHONPATH=generated python3 client.py packets.ts
"""

import argparse
import logging
import sys
import time

from thrift.protocol.TBinaryProtocol import TBinaryProtocol
from thrift.Thrift import TApplicationException, TException
from thrift.transport.TSocket import TSocket
from thrift.transport.TTransport import TFramedTransport, TTransportException

from tevra.thrift.dvb_tables.ttypes import (
    CAT, EIT, NIT, NITTS, PAT, PMT, PMTES, SDT, TOT, Descriptor, EITEvent, PATProgram, SDTService)
from tevra.thrift.in_module.im_SIControlSrv import Client
from tevra.thrift.in_module.ttypes import OutputServiceDescription, SrvOutputRequest
from tevra.thrift.spts.ttypes import AudioLanguage, LastNodeSettings

FIRST_PORT = 9224
PATIENCE_MS = 30_000

TRANSPORT_STREAM = 1
NETWORK = 1
SERVICE = 101
PMT_PID, VIDEO_PID, ENGLISH_PID, GERMAN_PID, ECM_PID, EMM_PID = 256, 257, 258, 259, 512, 80
OUTPUT = 1201  # service id of the output, and here its global service id too


class Failure(Exception):
    """What the user is told."""


def ca_descriptor(pid):
    """ISO/IEC 13818-1 2.6.16: CA_system_ID, three reserved bits, CA_PID."""
    return Descriptor(tag=0x09, data=bytes([0x00, 0x01, 0xE0 | pid >> 8, pid & 0xFF]))


def language_descriptor(code):
    """ISO/IEC 13818-1 2.6.18, audio type 0."""
    return Descriptor(tag=0x0A, data=code + b"\0")


def service_descriptor(service_type, provider, name):
    """EN 300 468 6.2.33."""
    data = bytes([service_type, len(provider)]) + provider + bytes([len(name)]) + name
    return Descriptor(tag=0x48, data=data)


def short_event_descriptor(language, name):
    """EN 300 468 6.2.37, without text."""
    return Descriptor(tag=0x4D, data=language + bytes([len(name)]) + name + b"\0")


def bcd(value):
    return value // 10 << 4 | value % 10


def dvb_time(unix_seconds):
    """EN 300 468 annex C: Modified Julian Date in 16 bits, then hours, minutes and seconds in BCD."""
    days, seconds = divmod(int(unix_seconds), 86400)
    clock = bcd(seconds // 3600) << 16 | bcd(seconds // 60 % 60) << 8 | bcd(seconds % 60)
    return 40587 + days << 24 | clock


def make_pat():
    return PAT(transportStreamId=TRANSPORT_STREAM, version=5, currentNext=True,
               programs=[PATProgram(programNumber=SERVICE, pid=PMT_PID)])


def make_cat():
    return CAT(version=2, currentNext=True, descriptors=[ca_descriptor(EMM_PID)])


def make_pmt():
    return PMT(programNumber=SERVICE, version=9, currentNext=True, pcrPid=VIDEO_PID,
               descriptors=[ca_descriptor(ECM_PID)],
               esList=[PMTES(streamType=0x1B, pid=VIDEO_PID, descriptors=[]),
                       PMTES(streamType=0x04, pid=ENGLISH_PID, descriptors=[language_descriptor(b"eng")]),
                       PMTES(streamType=0x04, pid=GERMAN_PID, descriptors=[language_descriptor(b"ger")])])


def make_sdt():
    service = SDTService(serviceId=SERVICE, eitSchedule=False, eitPresentFollowing=True, runningStatus=4, freeCA=True,
                         descriptors=[service_descriptor(0x19, b"Example", b"Uno")])
    return SDT(tableId=0x42, transportStreamId=TRANSPORT_STREAM, version=3, currentNext=True,
               originalNetworkId=NETWORK, services=[service])


def make_nit():
    name = Descriptor(tag=0x40, data=b"Example network")
    stream = NITTS(transportStreamId=TRANSPORT_STREAM, originalNetworkId=NETWORK, descriptors=[])
    return NIT(tableId=0x40, extension=NETWORK, networkId=NETWORK, version=1, currentNext=True, descriptors=[name],
               transportStreams=[stream])


def make_tot():
    return TOT(tableId=0x73, utcTime=dvb_time(time.time()), currentNext=True, descriptors=[])


def make_eits():
    """Present and following event, under the keys by which the daemon keeps them: service id, table id."""
    hour = int(time.time()) // 3600 * 3600
    events = [EITEvent(eventId=number, startTime=dvb_time(hour + 3600 * place), duration=0x010000,
                       runningStatus=4 if place == 0 else 1, freeCA=False, nvod=False,
                       descriptors=[short_event_descriptor(b"eng", name)])
              for place, (number, name) in enumerate([(11, b"News"), (12, b"Weather")])]
    eit = EIT(tableId=0x4E, serviceId=SERVICE, version=7, currentNext=True, transportStreamId=TRANSPORT_STREAM,
              originalNetworkId=NETWORK, segmentLastSectionNumber=0, lastTableId=0x4E, events=events)
    return {SERVICE: {0x4E: eit}}


def make_request():
    """One output that leaves the chain here, with English audio alone."""
    output = OutputServiceDescription(globalSID=OUTPUT, nextNode=0, outputSID=OUTPUT, serviceName="Uno é",
                                      transportStreamId=7, originalNetworkId=NETWORK, outputParam=0)
    settings = LastNodeSettings(globalSID=OUTPUT, uniqueSID=OUTPUT, audioFilter=1,
                                audioLanguages=[AudioLanguage(language="eng")])
    return SrvOutputRequest(inputSID=SERVICE, outputs={OUTPUT: output}, lastNodeSettings={OUTPUT: [settings]})


def feed(daemon):
    """The PAT goes first: it decides whether the PIDs of before still hold."""
    daemon.setPAT(make_pat())
    daemon.setCAT(make_cat())
    daemon.setPMT(make_pmt())
    daemon.setSDT(make_sdt())
    daemon.setNIT(make_nit())
    daemon.setTOT(make_tot())
    daemon.setEITPresentFollowing(make_eits())


def ask(daemon):
    answer = daemon.getSrvOutputData(make_request())
    if OUTPUT not in answer:
        raise Failure(f"the daemon has no PMT of service {SERVICE}")
    return answer[OUTPUT]


def feed_and_ask(host, port):
    """Everything over one connection, which is closed at once: others wait for it."""
    socket = TSocket(host, port)
    socket.setTimeout(PATIENCE_MS)
    transport = TFramedTransport(socket)
    try:
        transport.open()
    except TTransportException as error:
        raise Failure(f"no daemon at {host}:{port}: start it with tornel --set {port - FIRST_PORT}") from error
    try:
        daemon = Client(TBinaryProtocol(transport))
        feed(daemon)
        return ask(daemon)
    except TApplicationException as error:
        raise Failure(f"the daemon refused a call: {error.message}") from error
    except (TException, OSError) as error:
        raise Failure(f"the daemon at {host}:{port} did not answer a call: its log says why, "
                      "or another client keeps it") from error
    finally:
        transport.close()


def print_output(configuration):
    for item in configuration.pidItems:
        print(f"PID {item.inputPid} -> {item.outputPid}, attributes 0x{item.attributes:02X}")
    tables = configuration.outputTables
    for name, table, packets in (("PAT", tables.dvbTables.pat, tables.patPackets),
                                 ("SDT", tables.dvbTables.sdt, tables.sdtPackets),
                                 ("PMT", tables.dvbTables.pmt, tables.pmtPackets)):
        print(f"{name} version {table.version}, {len(packets)} packet(s)")


def write_packets(configuration, path):
    tables = configuration.outputTables
    try:
        with open(path, "wb") as file:
            file.write(b"".join(tables.patPackets + tables.sdtPackets + tables.pmtPackets))
    except OSError as error:
        raise Failure(f"cannot write {path}: give a file that can be written") from error


def options():
    parser = argparse.ArgumentParser(prog="client")
    parser.add_argument("packets", metavar="PACKETS.ts")
    parser.add_argument("mpts", metavar="MPTS", nargs="?", type=int, choices=range(4), default=0)
    parser.add_argument("host", metavar="HOST", nargs="?", default="127.0.0.1")
    return parser.parse_args()


def main():
    given = options()
    logging.getLogger("thrift").setLevel(logging.CRITICAL)  # the exceptions say it all
    try:
        configuration = feed_and_ask(given.host, FIRST_PORT + given.mpts)
        print_output(configuration)
        write_packets(configuration, given.packets)
    except Failure as failure:
        print(f"client: {failure}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
