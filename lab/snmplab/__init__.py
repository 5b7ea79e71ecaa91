"""A private test network for tools that speak SNMP.

The pieces, from the bottom up:

kernel      the few system calls that Python's library does not wrap
sandbox     fresh namespaces around the whole lab, and their end
guard       the proofs that a namespace is not the machine's own
topology    a network as data
fields      checked access to JSON
reading     topologies from JSON
namespaces  one network namespace for every node
network     bridges, veth pairs and addresses
ber         the transfer syntax of SNMP
message     SNMP messages, encoded and decoded
snmpd       Debian's agent in a namespace
responder   an agent of the lab's own, with chosen faults
agents      starting agents and waiting until they answer
capture     what passed the host's interfaces
observer    measures what a command costs
drawing     a topology as text
session     one lab from the first bridge to the command's exit code
api         a lab in one call, for tests
cli         the command line
"""


class LabError(Exception):
    """The lab cannot do what was asked. The message is for the user."""
