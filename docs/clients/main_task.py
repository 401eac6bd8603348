"""Stands in for MainTask: takes tornel's notifications and prints a line for each, until it is interrupted.

Usage: main_task.py [MPTS]

    thrift -r --gen py -out generated /usr/share/tornel/idl/in_module.thrift
    PYTHONPATH=generated python3 main_task.py
"""

import argparse
import sys

from thrift.protocol.TBinaryProtocol import TBinaryProtocolFactory
from thrift.server.TServer import TSimpleServer
from thrift.transport.TSocket import TServerSocket
from thrift.transport.TTransport import TFramedTransportFactory

from tevra.thrift.in_module.im_SINotifySrv import Iface, Processor

FIRST_PORT = 9256


def say(line):
    print(line, flush=True)


class MainTask(Iface):
    """Must return soon: the daemon waits up to 2 s for the next notification to be taken."""

    def requestConfiguration(self):
        say("configuration requested")  # a real one now has its client hand over every table

    def notifyPAT(self, pat):
        say(f"PAT of transport stream {pat.transportStreamId}, version {pat.version}")

    def notifyCAT(self, cat):
        say(f"CAT, version {cat.version}")

    def notifyPMT(self, pmt):
        say(f"PMT of service {pmt.programNumber}, version {pmt.version}, {len(pmt.esList)} streams")

    def notifySDT(self, sdt):
        say(f"SDT of transport stream {sdt.transportStreamId}, version {sdt.version}")

    def notifyTOT(self, tot):
        say("TOT")

    def notifyEITPresentFollowing(self, eit):
        say(f"EIT of service {eit.serviceId}, table 0x{eit.tableId:02X}, version {eit.version}")

    def notifyEITSchedule(self, eit):
        self.notifyEITPresentFollowing(eit)

    # notifyNIT, notifyBAT and notifyNIM, which no call causes, do nothing, as inherited.


def options():
    parser = argparse.ArgumentParser(prog="main_task")
    parser.add_argument("mpts", metavar="MPTS", nargs="?", type=int, choices=range(4), default=0)
    return parser.parse_args()


def main():
    port = FIRST_PORT + options().mpts
    server = TSimpleServer(Processor(MainTask()), TServerSocket("127.0.0.1", port), TFramedTransportFactory(),
                           TBinaryProtocolFactory())
    try:
        server.serve()  # one connection after the other, so the order stays
    except OSError as error:
        print(f"main_task: cannot listen on 127.0.0.1:{port} ({error.strerror}): end the program that does",
              file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 0


if __name__ == "__main__":
    sys.exit(main())
