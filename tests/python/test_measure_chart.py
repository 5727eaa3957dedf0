"""talonvireo.measure_chart: every slanted edge of any chart frame, found by itself or named by
a chart description, as one DataFrame row per edge."""
import math
import warnings

import numpy as np
import pytest

import talonvireo

BAYER16_RG = 0x021  # PixelFormat Bayer16 + PhaseRG


def test_auto_finds_and_measures_every_edge_of_every_square(rendered_chart):
    raw, _ = rendered_chart
    df = talonvireo.measure_chart(raw, format=BAYER16_RG, bits=10)
    assert len(df) == 104  # 26 squares of four sides
    for column in ("edge", "x", "y", "angle_deg", "length_px", "sfr_quarter_nyquist",
                   "sfr_half_nyquist", "mtf50", "flags", "centre_x", "centre_y", "name"):
        assert column in df.columns
    assert (df["state"] == "measured").all()
    assert list(df["edge"]) == list(range(104))
    assert df["length_px"].between(190, 210).all()
    # sigma 0.8 through the Malvar road: the same figure on every edge, within a few hundredths
    assert df["sfr_quarter_nyquist"].between(0.75, 0.95).all()


def test_a_built_in_chart_puts_every_slot_within_two_pixels_of_the_members_centre(rendered_chart):
    raw, _ = rendered_chart
    df = talonvireo.measure_chart(raw, "HLX6C", format=BAYER16_RG, bits=10)
    member = talonvireo.measure_frame(raw, "talonvireoSFR_raw10_HLX6C")
    assert len(df) == 52 and list(df["edge"]) == list(range(52))
    for k in range(52):
        # The member's record truncates its centre: compare with the pixel it names.
        distance = math.hypot(df["centre_x"][k] - (member[k]["x"] + 0.5),
                              df["centre_y"][k] - (member[k]["y"] + 0.5))
        assert distance <= 2.0, (k, distance)
    assert df["name"][0] == "L1-01" and df["name"][51] == "L2-26"


def test_a_grey_array_is_grey_and_an_eight_bit_frame_works(rendered_chart):
    raw, _ = rendered_chart
    grey8 = (raw.astype(np.float64) * 255.0 / 1023.0).round().astype(np.uint8)
    df = talonvireo.measure_chart(grey8)
    assert len(df) == 104 and (df["state"] == "measured").all()


def test_the_classic_method_on_request(rendered_chart):
    raw, _ = rendered_chart
    precise = talonvireo.measure_chart(raw, format=BAYER16_RG, bits=10)
    classic = talonvireo.measure_chart(raw, format=BAYER16_RG, bits=10, method="classic")
    assert len(classic) == len(precise)
    assert not np.allclose(classic["sfr_half_nyquist"], precise["sfr_half_nyquist"])
    assert np.allclose(classic["sfr_quarter_nyquist"], precise["sfr_quarter_nyquist"], atol=0.05)


def test_raw_planes_of_a_mosaic(rendered_chart):
    raw, _ = rendered_chart
    df = talonvireo.measure_chart(raw, format=BAYER16_RG, bits=10, per_channel_raw=True)
    for plane in ("R", "Gr", "Gb", "B"):
        assert df[f"raw_{plane}_sfr_quarter_nyquist"].notna().all()


def test_a_frame_without_a_quadrilateral_gives_an_empty_table_and_says_why():
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        df = talonvireo.measure_chart(np.full((300, 400), 128, np.uint8))
    assert len(df) == 0
    assert "sfr_quarter_nyquist" in df.columns
    assert any("no dark-on-light or light-on-dark quadrilateral" in str(w.message)
               for w in caught)


def test_another_chart_does_not_register(rendered_chart):
    raw, _ = rendered_chart
    with pytest.raises(talonvireo.ChartNotLocated, match="K31R22BX"):
        talonvireo.measure_chart(raw, "K31R22BX", format=BAYER16_RG, bits=10)


@pytest.mark.parametrize("image, options, error, text", [
    (np.zeros((10, 10), np.float32), {}, TypeError, "uint8 or uint16"),
    (np.zeros((10, 10, 2), np.uint8), {}, TypeError, "uint8 or uint16"),
    (np.zeros((0, 10), np.uint8), {}, "InvalidInput", "1 to 2147483647 pixels"),
    (np.zeros((10, 10), np.uint8), {"format": 0x021}, "InvalidInput", "does not fit"),
    (np.zeros((10, 10), np.uint16), {"format": 0x020}, "InvalidInput", "phase"),
    (np.zeros((10, 10), np.uint16), {"bits": 20}, "InvalidInput", "bits must be 8 to 16"),
    (np.full((10, 10), 4095, np.uint16), {"bits": 10}, "InvalidInput", "above 10-bit"),
    (np.zeros((10, 10), np.uint8), {"method": "fast"}, "InvalidInput", "method must be"),
    (np.zeros((10, 10), np.uint8), {"chart": "NOPE"}, "InvalidInput", "HLX6C"),
])
def test_bad_input_is_refused_by_name(image, options, error, text):
    options = dict(options)
    chart = options.pop("chart", "auto")
    cls = getattr(talonvireo, error) if isinstance(error, str) else error
    with pytest.raises(cls, match=text):
        talonvireo.measure_chart(image, chart, **options)


def test_a_broadcast_frame_too_large_is_refused_before_any_copy():
    huge = np.broadcast_to(np.zeros(1, np.uint8), (100000, 100000))
    with pytest.raises(talonvireo.InvalidInput, match="2147483647"):
        talonvireo.measure_chart(huge)
