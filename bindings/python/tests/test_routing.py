"""Routes as context managers."""

import gc

import pytest
import varmex
from varmex.routing import Lines, RoutingSession, Seed

TRIG3 = "PXI_Trig3"


def route(session, token):
    (calculated,) = session.calculate([Seed(TRIG3, token)], [TRIG3])
    return calculated


def is_free(device):
    with RoutingSession(device) as other:
        return len(other.calculate([Seed(TRIG3, "somebody else")], [TRIG3])) == 1


def test_a_route_holds_its_terminal_in_its_block(root):
    with varmex.Session() as session:
        device = session.device(51, 0, 0)
    with pytest.raises(varmex.ClosedError):
        RoutingSession(device)
    with RoutingSession("51.0.0", Lines.TRIGGER_BUS) as mine:
        assert [terminal.name for terminal in mine.terminals] == [f"PXI_Trig{n}" for n in range(8)]
        assert mine.terminals[3].bus_line == 3 and mine.terminals[3].is_external
        with route(mine, "mine") as held:
            assert held.destination == TRIG3 and not is_free("51.0.0")
            held.program()
        assert is_free("51.0.0")
        with pytest.raises(varmex.InvalidArgumentError):
            held.program()


def test_conflicts_are_told(root):
    with RoutingSession("51.0.0:1") as mine:
        first, second = route(mine, "one"), route(mine, "two")
        first.reserve()
        with pytest.raises(varmex.ResourcesInUseError) as raised:
            second.reserve()
        assert [conflict.ticket for conflict in raised.value.conflicts] == [first.ticket]
        first.unreserve()
        second.reserve()
    assert is_free("51.0.0:1")


def test_what_is_left_gives_its_terminal_back(root):
    session = RoutingSession("51.0.0:1")
    held = route(session, "forgotten")
    held.reserve()
    del session
    assert not is_free("51.0.0:1")  # the route keeps its session
    del held
    gc.collect()
    assert is_free("51.0.0:1")
