# Every talonvireo-sfr command, its outputs and each of its failure messages and statuses.
# Frames come from the tool's own renderer (fixture CliFrames) in one scratch folder.
set(cli_dir ${CMAKE_CURRENT_BINARY_DIR}/cli)

# cli_test(NAME STATUS MATCH [NOMATCH re] [FILES f...] [JSON] [JSON_CHECK expr]
#          [JSON_FILES f...] [FIXTURE] ARGS a...)   JSON: stdout must be strict JSON; JSON_CHECK:
#          a Python expression on that document `d` that must hold (implies JSON); JSON_FILES:
#          these files must be strict JSON too.
function(cli_test)
    cmake_parse_arguments(T "FIXTURE;JSON" "NAME;STATUS;MATCH;NOMATCH;JSON_CHECK"
        "FILES;JSON_FILES;ARGS" ${ARGN})
    string(JOIN "|" args ${T_ARGS})
    string(JOIN "|" files ${T_FILES})
    string(JOIN "|" json_files ${T_JSON_FILES})
    set(strict OFF)
    if(T_JSON OR T_JSON_CHECK)
        set(strict ON)
    endif()
    foreach(f IN LISTS T_FILES)
        file(REMOVE ${cli_dir}/${f})
    endforeach()
    add_test(NAME Cli.${T_NAME}
        COMMAND ${CMAKE_COMMAND} "-DCOMMAND=$<TARGET_FILE:talonvireo-sfr>|${args}"
            -DSTATUS=${T_STATUS} "-DMATCH=${T_MATCH}" "-DNOMATCH=${T_NOMATCH}" "-DFILES=${files}"
            "-DJSON_FILES=${json_files}" -DSTRICT_JSON=${strict} "-DJSON_CHECK=${T_JSON_CHECK}"
            -DWORKDIR=${cli_dir}
            -P ${CMAKE_CURRENT_SOURCE_DIR}/ExpectCommand.cmake)
    if(T_FIXTURE)
        set_tests_properties(Cli.${T_NAME} PROPERTIES FIXTURES_SETUP CliFrames)
    else()
        set_tests_properties(Cli.${T_NAME} PROPERTIES FIXTURES_REQUIRED CliFrames)
    endif()
endfunction()

# ---- The dispatcher ----
cli_test(NAME NoCommandPrintsUsage STATUS 2 MATCH "Usage: talonvireo-sfr .*SUBCOMMAND")
cli_test(NAME HelpListsEveryCommand STATUS 0 MATCH "demo.*measure.*batch.*roi.*render.*columns.*focus"
    ARGS --help)
cli_test(NAME UnknownCommandIsRefused STATUS 2 MATCH "unknown command 'nope'" ARGS nope)
foreach(command demo measure batch roi render focus)
    cli_test(NAME ${command}.HelpTextExplainsTheOptions STATUS 0
        MATCH "Usage: talonvireo-sfr ${command}" ARGS ${command} --help)
endforeach()

# ---- render: frames for the other commands ----
cli_test(NAME render.WritesChartFrameAndTruth FIXTURE STATUS 0 MATCH "wrote h6.raw"
    FILES h6.raw h6.png h6.json JSON_FILES h6.json
    ARGS render --project HLX6C --bits 10 --bayer --sigma 0.8 --out h6)
cli_test(NAME render.WritesAK83P09BQFrame FIXTURE STATUS 0 FILES q8.raw
    ARGS render --project K83P09BQ --bits 10 --bayer --sigma 0.8 --out q8)
cli_test(NAME render.WritesASixteenBitHLX6CFrame FIXTURE STATUS 0 FILES h16.raw
    ARGS render --project HLX6C --bits 16 --bayer --sigma 0.8 --out h16)
cli_test(NAME render.WritesMipiRaw10 FIXTURE STATUS 0 MATCH "wrote h6m.raw" FILES h6m.raw
    ARGS render --project HLX6C --bits 10 --bayer --sigma 0.8 --packing mipi10 --out h6m)
cli_test(NAME render.CropsTheFrameAroundTheChart FIXTURE STATUS 0 FILES crop.raw
    ARGS render --project HLX6C --bits 10 --bayer --sigma 0.8 --width 3490 --out crop)
cli_test(NAME render.WritesAFrameWithoutAChart FIXTURE STATUS 0 FILES blank.raw
    ARGS render --project HLX6C --bits 10 --bayer --width 1000 --height 800 --shift-x 5000
        --out blank)
cli_test(NAME render.OverExposesAFrame FIXTURE STATUS 0 FILES bright.raw
    ARGS render --project HLX6C --bits 10 --bayer --sigma 0.8 --light 2.0 --out bright)
cli_test(NAME render.ShiftsTheChartOffItsPlace FIXTURE STATUS 0 FILES shifted.raw
    ARGS render --project HLX6C --bits 10 --bayer --sigma 0.8 --shift-x -180 --shift-y 100
        --read-noise 1.5 --out shifted)
cli_test(NAME render.WritesAGreyImage FIXTURE STATUS 0 FILES g8.png
    ARGS render --project HLX6C --bits 8 --sigma 0.8 --out g8)
cli_test(NAME render.WritesOneRawRegion FIXTURE STATUS 0 FILES reg.raw
    ARGS render --project HLX6C --bits 8 --sigma 0.8 --width 80 --height 80 --shift-x -1841
        --shift-y -1576 --out reg)
cli_test(NAME render.WritesOneBayerRegion FIXTURE STATUS 0 FILES breg.raw
    ARGS render --project HLX6C --bits 16 --bayer --sigma 0.8 --width 80 --height 80
        --shift-x -1841 --shift-y -1576 --out breg)
cli_test(NAME render.WritesPaddedMipiRaw12AfterAHeader FIXTURE STATUS 0 FILES h6p.raw
    ARGS render --project HLX6C --bits 10 --bayer --sigma 0.8 --packing mipi12 --stride 6016
        --offset 256 --out h6p)
cli_test(NAME render.WritesRaw8 FIXTURE STATUS 0 FILES h8.raw
    ARGS render --project HLX6C --bits 8 --bayer --sigma 0.8 --packing raw8 --out h8)
cli_test(NAME render.WritesADng FIXTURE STATUS 0 MATCH "wrote h6d.raw, h6d.png, h6d.json, h6d.dng"
    FILES h6d.dng ARGS render --project HLX6C --bits 10 --bayer --sigma 0.8 --dng --out h6d)
cli_test(NAME render.WritesASixteenBitDng FIXTURE STATUS 0 FILES d16.dng
    ARGS render --project HLX6C --bits 16 --bayer --width 400 --height 300 --dng --out d16)
cli_test(NAME render.RefusesMipiRaw12BeyondTwelveBits STATUS 2
    MATCH "--packing mipi12 needs --bits 12 or fewer"
    ARGS render --bits 14 --packing mipi12 --width 64 --height 64 --out x)
cli_test(NAME render.RefusesADngWithoutAMosaic STATUS 2 MATCH "--dng needs --bayer"
    ARGS render --bits 10 --dng --width 64 --height 64 --out x)
cli_test(NAME render.RefusesUnknownProjects STATUS 2 MATCH "unknown project 'NOPE'"
    ARGS render --project NOPE)
cli_test(NAME render.RefusesMipiPackingBeyondTenBits STATUS 2 MATCH "mipi10 needs --bits 10"
    ARGS render --bits 14 --packing mipi10 --width 64 --height 64 --out x)
cli_test(NAME chart.StillNamesTheRenderer STATUS 0 MATCH "wrote small.raw"
    ARGS chart --project K74T16BX --width 400 --height 300 --out small)

# ---- demo ----
cli_test(NAME demo.MeasuresTheDefaultChartBesideItsTruth STATUS 0
    MATCH "talonvireoSFR/K31R22BX on 4000 x 3000: 68 edges.*true N/4.*status 0"
    FILES talonvireo-demo.png talonvireo-demo.json ARGS demo)
cli_test(NAME demo.MeasuresHLX6CAt14Bits STATUS 0
    MATCH "talonvireoSFR_raw14_HLX6C on 4000 x 3000: 52 edges" FILES d14.png d14.json
    ARGS demo --project HLX6C --bits 14 --out d14)
cli_test(NAME demo.MeasuresK83P09BQAt16Bits STATUS 0 MATCH "talonvireoSFR_raw16_RQ8.*status 0"
    ARGS demo --project K83P09BQ --bits 16 --out d83)
cli_test(NAME demo.MarksEdgesBelowTheLimit STATUS 1 MATCH "FAIL.*68 of 68 edges below"
    ARGS demo --min-sfr 0.99 --out dlimit)
cli_test(NAME demo.RefusesADepthWithoutAMember STATUS 2 MATCH "no member measures K31R22BX at 16"
    ARGS demo --bits 16)
cli_test(NAME demo.RefusesUnknownProjects STATUS 2 MATCH "unknown project" ARGS demo --project X)
cli_test(NAME demo.RefusesUnknownOptions STATUS 2 MATCH "bad arguments: .*--nope" ARGS demo --nope)

# ---- measure ----
set(h6 h6.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.PrintsATableOfEveryEdge STATUS 0
    MATCH "talonvireoSFR_raw10_HLX6C on 4000 x 3000: 52 edges.*\n   51 " ARGS measure ${h6})
cli_test(NAME measure.WritesJson STATUS 0 MATCH "\"edges\":.*\"edge\": 51" ARGS measure ${h6} --json)
cli_test(NAME measure.WritesCsv STATUS 0 MATCH "edge,state,x,y,side,sfr_quarter_nyquist.*warnings\n0,measured,.*\n51,measured,"
    ARGS measure ${h6} --csv)
cli_test(NAME measure.DrawsTheOverlay STATUS 0 FILES overlay.png
    ARGS measure ${h6} --overlay overlay.png --min-sfr 0.5)
cli_test(NAME measure.ExitsOneWhenAnEdgeIsBelowTheLimit STATUS 1 MATCH "52 of 52 edges below"
    ARGS measure ${h6} --min-sfr 0.99)
cli_test(NAME measure.ReadsMipiRaw10 STATUS 0 MATCH "52 edges"
    ARGS measure h6m.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --packing mipi10)
cli_test(NAME measure.ReadsPaddedMipiRaw12AfterAHeader STATUS 0 MATCH "52 edges"
    ARGS measure h6p.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --packing mipi12 --stride 6016 --offset 256)
cli_test(NAME measure.ReadsRaw8 STATUS 0
    MATCH "52 edges.*warning: 8-bit samples \\(raw8\\) are measured as 10-bit codes"
    ARGS measure h8.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --packing raw8)
cli_test(NAME measure.RefusesAStrideShorterThanALine STATUS 2
    MATCH "--stride 5000 is shorter than a line of 4000 samples \\(6000 bytes packed\\)"
    ARGS measure h6p.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --packing mipi12 --stride 5000)
cli_test(NAME measure.NamesThePaddedLayoutOfAFileOfTheWrongSize STATUS 4
    MATCH "lines 6008 bytes apart, after 256 header bytes"
    ARGS measure h6p.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --packing mipi12 --stride 6008 --offset 256)
cli_test(NAME measure.RefusesAnUnknownPacking STATUS 2
    MATCH "unknown packing 'raw7' \\(words16, mipi10, mipi12 or raw8\\)"
    ARGS measure ${h6} --packing raw7)
cli_test(NAME measure.ReadsADngThroughLibRaw STATUS 0 MATCH "52 edges"
    ARGS measure h6d.dng --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.RefusesADngDeeperThanTheMember STATUS 10
    MATCH "d16.dng holds 16-bit samples; talonvireoSFR_raw10_HLX6C takes 10"
    ARGS measure d16.dng --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.RefusesAFileLibRawCannotRead STATUS 3 MATCH "cannot read nope.dng as camera raw"
    ARGS measure nope.dng --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.AddsThePreciseFiguresBesideTheMembers STATUS 0
    MATCH "SFR N/2    MTF50 \\|    P N/4    P N/2  P MTF50 .*\n   51 .*P: the precise method"
    ARGS measure ${h6} --method precise)
cli_test(NAME measure.AddsEachRawColourPlaneToTheJson STATUS 0 JSON
    MATCH "\"method\": \"precise, per channel raw\".*\"raw_Gb_sfr_quarter_nyquist\": 0[.][0-9]+"
    ARGS measure ${h6} --method precise --per-channel-raw --json)
cli_test(NAME measure.CsvCarriesThePreciseColumns STATUS 0
    MATCH "precise_mtf50,raw_R_sfr_quarter_nyquist.*\n51,"
    ARGS measure ${h6} --method precise --per-channel-raw --csv)
cli_test(NAME measure.PerChannelRawNeedsThePreciseMethod STATUS 2
    MATCH "--per-channel-raw needs --method precise" ARGS measure ${h6} --per-channel-raw)
cli_test(NAME measure.RefusesAnUnknownMethod STATUS 2 MATCH "unknown --method 'exact'"
    ARGS measure ${h6} --method exact)
set(limits ${CMAKE_CURRENT_SOURCE_DIR}/data/limits)
cli_test(NAME measure.GradesEveryEdgeAgainstALimitsFile STATUS 1
    MATCH "height%.*facing.*limit\n.*\n    3 [^\n]*FAIL: sfr_half_nyquist [0-9.]+ < 0.5 \\(zone centre.*edges fail the limits in .*hlx6c.toml: frame FAILS"
    ARGS measure ${h6} --limits ${limits}/hlx6c.toml)
cli_test(NAME measure.PassesAFrameWithinItsLimits STATUS 0 MATCH "0 of 52 edges fail .* frame PASSES"
    ARGS measure ${h6} --limits ${limits}/lenient.toml)
cli_test(NAME measure.JsonCarriesFieldZoneAndTheFailedLimit STATUS 1 JSON
    MATCH "\"limits\": .*\"height_percent\".*\"orientation\".*\"zone\": \"0.7F\".*\"failed_limit\": \"sfr_quarter_nyquist"
    ARGS measure ${h6} --limits ${limits}/hlx6c.toml --json)
cli_test(NAME measure.CsvCarriesFieldZoneAndTheFailedLimit STATUS 1
    MATCH "height_percent,azimuth_deg,orientation,zone,failed_limit,pass,warnings\n0,.*,(tangential|sagittal),centre,"
    ARGS measure ${h6} --limits ${limits}/hlx6c.toml --csv)
cli_test(NAME measure.RefusesALimitsSyntaxErrorNamingTheLine STATUS 2
    MATCH "limits .*syntax-error.toml:4: " ARGS measure ${h6} --limits ${limits}/syntax-error.toml)
cli_test(NAME measure.RefusesAnUnknownLimitsKeyNamingTheLine STATUS 2
    MATCH "limits .*unknown-key.toml:5: unknown key 'sfr_quater_nyquist' in a zone"
    ARGS measure ${h6} --limits ${limits}/unknown-key.toml)
cli_test(NAME measure.RefusesALimitOfTheWrongType STATUS 2
    MATCH "limits .*out-of-range.toml:4: 'mtf50' must be a number from 0"
    ARGS measure ${h6} --limits ${limits}/out-of-range.toml)
cli_test(NAME measure.RefusesZonesOutOfOrder STATUS 2 MATCH "zones must grow in max_height"
    ARGS measure ${h6} --limits ${limits}/zones-out-of-order.toml)
cli_test(NAME measure.RefusesACustomLimitWithoutItsFrequency STATUS 2
    MATCH "the limits set sfr_custom: --freq-divisor is needed"
    ARGS measure ${h6} --limits ${limits}/custom.toml)
cli_test(NAME measure.RefusesAMissingLimitsFile STATUS 3 MATCH "cannot read limits .*nope.toml"
    ARGS measure ${h6} --limits nope.toml)
cli_test(NAME measure.LimitsAndMinSfrExcludeEachOther STATUS 2
    MATCH "--limits and --min-sfr exclude each other"
    ARGS measure ${h6} --limits ${limits}/lenient.toml --min-sfr 0.5)
cli_test(NAME measure.RefusesASlotTheChartDoesNotHave STATUS 2
    MATCH "slot-beyond-chart.toml:8: \\[\\[slot\\]\\] edge 60 is not a slot of talonvireoSFR_raw10_HLX6C's chart \\(0 to 51\\)"
    NOMATCH "edges in" ARGS measure ${h6} --limits ${limits}/slot-beyond-chart.toml)
cli_test(NAME batch.RefusesASlotTheChartDoesNotHaveBeforeAnyFrame STATUS 2
    MATCH "slot-beyond-chart.toml:8: \\[\\[slot\\]\\] edge 60" NOMATCH "frames/s"
    ARGS batch h6.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --limits ${limits}/slot-beyond-chart.toml)
cli_test(NAME measure.CountsTheEdgesBeyondTheLastZoneAsUnzoned STATUS 0
    MATCH "frame PASSES.*warning: limits .*short-zones.toml: [0-9]+ edges lie beyond the last zone \\('middle', max_height 50 %\\): unzoned"
    ARGS measure ${h6} --limits ${limits}/short-zones.toml)
cli_test(NAME measure.GradesMtf50InLpPerMmAndLwPerPh STATUS 0
    MATCH "0 of 52 edges fail the limits in .*sensor-units.toml: frame PASSES"
    ARGS measure ${h6} --limits ${limits}/sensor-units.toml --pixel-pitch 1.12um)
cli_test(NAME measure.RefusesLimitsInSensorUnitsWithoutAPixelPitch STATUS 2
    MATCH "sensor-units.toml:5: 'mtf50_lp_per_mm' needs a pixel pitch" NOMATCH "edges in"
    ARGS measure ${h6} --limits ${limits}/sensor-units.toml)
cli_test(NAME measure.DrawsTheFieldCurveAgainstItsLimits STATUS 0 FILES limits-curve.png
    ARGS measure ${h6} --limits ${limits}/short-zones.toml --pixel-pitch 1.12um
        --field-curve limits-curve.png)
cli_test(NAME measure.GivesMtf50InSensorUnits STATUS 0
    MATCH "pixel pitch 1.12 um: Nyquist/4 = 111.6 lp/mm.*MTF50    lp/mm    LW/PH"
    ARGS measure ${h6} --pixel-pitch 1.12um)
cli_test(NAME measure.JsonNamesTheUnitsInItsKeys STATUS 0 JSON
    MATCH "\"pixel_pitch_um\": 1.4.*\"nyquist_lp_per_mm\".*\"mtf50_lp_per_mm\".*\"mtf50_lw_per_ph\""
    ARGS measure ${h6} --pixel-pitch 0.0014mm --json)
cli_test(NAME measure.RefusesAPixelPitchWithoutItsUnit STATUS 2
    MATCH "--pixel-pitch takes a length with its unit" ARGS measure ${h6} --pixel-pitch 1.12)
cli_test(NAME measure.DrawsTheFieldPlot STATUS 1 FILES field.png
    ARGS measure ${h6} --limits ${limits}/hlx6c.toml --field-plot field.png)
cli_test(NAME measure.DrawsTheFieldCurve STATUS 0 FILES field-curve.png
    ARGS measure ${h6} --method precise --field-curve field-curve.png)
cli_test(NAME measure.NeedsAFrame STATUS 2 MATCH "FRAME is required"
    ARGS measure --member talonvireoSFR_raw16)
cli_test(NAME measure.NeedsAMember STATUS 2 MATCH "--member is required"
    ARGS measure h6.raw --width 4000 --height 3000)
cli_test(NAME measure.RefusesUnknownMembers STATUS 2 MATCH "unknown member 'x'.*talonvireoSFR_raw16_RQ8"
    ARGS measure h6.raw --width 4000 --height 3000 --member x)
cli_test(NAME measure.RefusesARegionLargerThanTheRing STATUS 2 MATCH "--roi must be 1 .. --mark"
    ARGS measure ${h6} --roi 120)
cli_test(NAME measure.RefusesUnknownPackings STATUS 2 MATCH "unknown packing 'raw12'"
    ARGS measure ${h6} --packing raw12)
cli_test(NAME measure.RefusesJsonAndCsvTogether STATUS 2 MATCH "exclude each other"
    ARGS measure ${h6} --json --csv)
cli_test(NAME measure.RefusesNonNumbers STATUS 2 MATCH "--roi takes an integer, not 'eighty'"
    ARGS measure ${h6} --roi eighty)
cli_test(NAME measure.ReportsAnUnreadableFile STATUS 3 MATCH "cannot read missing.raw"
    ARGS measure missing.raw --width 4000 --height 3000 --member talonvireoSFR_raw16)
cli_test(NAME measure.ReportsAFileOfTheWrongSize STATUS 4
    MATCH "holds 24000000 bytes, not 20000000 \\(2000 x 5000, 2 bytes per sample\\)"
    ARGS measure h6.raw --width 2000 --height 5000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.ReportsAChartNotLocated STATUS 5 MATCH "chart not located"
    ARGS measure blank.raw --width 1000 --height 800 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.ReportsARegionOutOfBounds STATUS 6 MATCH "region out of bounds"
    ARGS measure crop.raw --width 3490 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.ReportsAFailedSfrCalculation STATUS 7 MATCH "SFR calculation failed"
    ARGS measure ${h6} --roi 3)

# ---- measure --partial: a failed frame region by region ----
set(crop crop.raw --width 3490 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.PartialNamesTheEdgesOffTheFrameAndMeasuresTheRest STATUS 6
    MATCH "PARTIAL: talonvireoSFR_raw10_HLX6C failed on this frame \\(region out of bounds.*not the member's verdict.*off the frame\n.*measured\n.*of 52 edges measured region by region; 0 not located, [1-9][0-9]* off the frame, 0 refused"
    ARGS measure ${crop} --partial)
cli_test(NAME measure.PartialNamesTheRegionsTheSfrRefuses STATUS 7
    MATCH "refused by the SFR: region not measurable \\(status -1\\).*26 of 52 edges measured region by region; 0 not located, 0 off the frame, 26 refused"
    ARGS measure ${h6} --roi 3 --partial)
cli_test(NAME measure.PartialReportsEveryEdgeNotLocated STATUS 5
    MATCH "chart not located.*0 of 52 edges measured region by region; 52 not located"
    ARGS measure blank.raw --width 1000 --height 800 --member talonvireoSFR_raw10_HLX6C --partial)
cli_test(NAME measure.PartialJsonSaysTheVerdictIsNotTheMembers STATUS 6 JSON
    MATCH "\"partial\": {.*\"member_exit_status\": 6.*\"verdict\": \"not the member's.*\"state\": \"off the frame\""
    ARGS measure ${crop} --partial --json)
cli_test(NAME measure.PartialCsvCarriesEachEdgesState STATUS 6
    MATCH "edge,state,.*\n0,measured,.*\n.*,off the frame,"
    ARGS measure ${crop} --partial --csv)
cli_test(NAME measure.PartialFailsTheUnmeasuredEdgesAgainstLimits STATUS 6
    MATCH " FAIL off the frame\n.*edges fail the limits"
    ARGS measure ${crop} --partial --limits ${limits}/lenient.toml)
cli_test(NAME measure.PartialLeavesAMeasuredFrameAsItIs STATUS 0 MATCH "52 edges" NOMATCH "PARTIAL|state"
    ARGS measure ${h6} --partial)
cli_test(NAME measure.WritesADiagnosticOverlayWhenTheMemberFails STATUS 6 FILES diagnosis.png
    MATCH "region out of bounds.*the overlay shows where each edge was found" NOMATCH "PARTIAL"
    ARGS measure ${crop} --overlay diagnosis.png --overlay-width 1000)
cli_test(NAME measure.PartialDrawsTheFieldOfTheEdgesLeft STATUS 6 FILES partial-field.png
    ARGS measure ${crop} --partial --field-plot partial-field.png)

# ---- batch ----
cli_test(NAME batch.GradesFramesOfEveryKindAgainstLimits STATUS 0
    MATCH "batch: 2 frames, 2 done now.*measured  2.*yield     100.0 % \\(2 of 2\\)"
    FILES b.sqlite b.csv
    ARGS batch h6.raw h6d.dng --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --limits ${limits}/lenient.toml --db b.sqlite --csv b.csv --jobs 2)
cli_test(NAME batch.RecordsAFrameItCannotMeasureAndGoesOn STATUS 1
    MATCH "measured  1.*errors    1.*1  wrong file size"
    ARGS batch h6.raw blank.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME batch.RefusesAFrameThatDoesNotExist STATUS 2 MATCH "no such frame file: nope.raw"
    ARGS batch h6.raw nope.raw --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME batch.RefusesAGlobThatMatchesNothing STATUS 2 MATCH "no such frame file: nope\\*.raw"
    ARGS batch nope*.raw --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME batch.RefusesAFolderWithoutFrames STATUS 2 MATCH "no frame files in the folder"
    ARGS batch ${limits} --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME batch.NeedsAtLeastOneFrame STATUS 2 MATCH "FRAMES is required"
    ARGS batch --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME batch.RefusesJobsOutOfRange STATUS 2 MATCH "--jobs is out of range: .0. \\(1 .. +256\\)"
    ARGS batch h6.raw --member talonvireoSFR_raw10_HLX6C --jobs 0)
cli_test(NAME batch.RefusesADatabaseInAMissingFolder STATUS 2 MATCH "--db"
    ARGS batch h6.raw --member talonvireoSFR_raw10_HLX6C --db no-such-folder/r.sqlite)
cli_test(NAME batch.RefusesAnUnknownMember STATUS 2 MATCH "unknown member 'nope'"
    ARGS batch h6.raw --member nope)

# ---- roi ----
set(edge g8.png --rect 1841,1576,80,80)
cli_test(NAME roi.PrintsTheFigures STATUS 0 MATCH "status 0, 1 channel.*MTF50.*\n +grey +-?[0-9.]+ +0\\.[78]"
    ARGS roi ${edge})
cli_test(NAME roi.WritesTheCurveAndItsPlot STATUS 0 FILES curve.csv plot.png
    ARGS roi ${edge} --curve curve.csv --plot plot.png --freq-divisor 8)
cli_test(NAME roi.ReportsOnTheNormalAxisAsJson STATUS 0
    MATCH "\"normal_frequency_axis\": true.*\"channel\": \"grey\".*\"mtf10\"" ARGS roi ${edge} --normal-axis --json)
cli_test(NAME roi.ReadsARawRegion STATUS 0 MATCH "status 0"
    ARGS roi reg.raw --width 80 --height 80 --format 0x100)
cli_test(NAME roi.NeedsAnImage STATUS 2 MATCH "IMAGE is required" ARGS roi --json)
cli_test(NAME roi.NeedsTheFormatOfARawRegion STATUS 2 MATCH "a raw region needs --format"
    ARGS roi reg.raw --width 80 --height 80)
cli_test(NAME roi.RefusesAFormatThatDoesNotFitTheImage STATUS 2 MATCH "does not fit"
    ARGS roi ${edge} --format 0x200)
cli_test(NAME roi.RefusesAMalformedRect STATUS 2 MATCH "--rect takes x,y,w,h"
    ARGS roi g8.png --rect 1,2,3)
cli_test(NAME roi.ReportsARectOutsideTheImage STATUS 6 MATCH "--rect lies outside"
    ARGS roi g8.png --rect 3990,0,80,80)
cli_test(NAME roi.ReportsAnUnreadableFile STATUS 3 MATCH "cannot read missing.png"
    ARGS roi missing.png)
cli_test(NAME roi.ReportsAFileThatIsNotAnImage STATUS 3 MATCH "cannot decode .*not-an-image.png"
    ARGS roi ${CMAKE_CURRENT_SOURCE_DIR}/data/not-an-image.png)
cli_test(NAME roi.ReportsARawRegionOfTheWrongSize STATUS 4 MATCH "holds 6400 bytes, not 8100"
    ARGS roi reg.raw --width 90 --height 90 --format 0x100)
cli_test(NAME roi.MeasuresWithThePreciseMethod STATUS 0
    MATCH "status 0, 1 channel, precise method, frequencies across the edge.*\n +grey "
    ARGS roi ${edge} --method precise)
cli_test(NAME roi.PreciseJsonNamesTheMethodAndTheKernel STATUS 0 JSON
    MATCH "\"method\": \"precise\".*\"kernel_sigma\"" ARGS roi ${edge} --method precise --json)
cli_test(NAME roi.MeasuresEachRawColourPlane STATUS 0
    MATCH "4 channels, precise method.*\n +R .*\n +Gr .*\n +Gb .*\n +B "
    ARGS roi breg.raw --width 80 --height 80 --format 0x021 --method precise --per-channel-raw)
cli_test(NAME roi.PerChannelRawNeedsThePreciseMethod STATUS 2
    MATCH "--per-channel-raw needs --method precise"
    ARGS roi breg.raw --width 80 --height 80 --format 0x021 --per-channel-raw)
cli_test(NAME roi.PerChannelRawNeedsABayerRegion STATUS 2 MATCH "--per-channel-raw needs a Bayer"
    ARGS roi ${edge} --method precise --per-channel-raw)
cli_test(NAME roi.RefusesAnUnknownMethod STATUS 2 MATCH "unknown --method 'fast'"
    ARGS roi ${edge} --method fast)
cli_test(NAME roi.ReportsAFailedSfrCalculation STATUS 7 MATCH "edge contrast below 20 %"
    ARGS roi g8.png --rect 0,0,80,80)

# ---- Versions, GNU option syntax ----
cli_test(NAME VersionPrintsTheToolVersion STATUS 0 MATCH "^talonvireo-sfr [0-9]+\\.[0-9]+\\.[0-9]+"
    ARGS --version)
cli_test(NAME measure.AcceptsOptionEqualsValue STATUS 0 MATCH "52 edges"
    ARGS measure h6.raw --width=4000 --height=3000 --member=talonvireoSFR_raw10_HLX6C)

# ---- Strict JSON: a figure that does not exist is null; every document has its head ----
cli_test(NAME json.MeasureWritesNullForAnInfiniteCustomFigure STATUS 0 JSON
    MATCH "\"schema_version\": [0-9]+.*\"tool_version\".*\"input\": \"h6.raw\".*\"sfr_custom\": null"
    ARGS measure ${h6} --freq-divisor 0.2 --json)
cli_test(NAME json.RoiWritesNullForAFrequencyBeyondTheTable STATUS 0 JSON
    MATCH "\"input\": \"g8.png\".*\"sfr_custom\": null" ARGS roi ${edge} --freq-divisor 0.1 --json)
cli_test(NAME json.DemoReportIsStrictJson STATUS 0 FILES dj.json JSON_FILES dj.json
    ARGS demo --project HLX6C --out dj)
cli_test(NAME json.MeasureWithoutCustomIsStrictJson STATUS 0 JSON ARGS measure ${h6} --json)

# ---- A custom figure that was not asked for is absent, not 0 ----
cli_test(NAME measure.JsonLeavesOutAnUnrequestedCustomFigure STATUS 0 NOMATCH "custom"
    ARGS measure ${h6} --json)
cli_test(NAME measure.CsvLeavesOutAnUnrequestedCustomFigure STATUS 0 NOMATCH "custom"
    ARGS measure ${h6} --csv)
cli_test(NAME measure.TableLeavesOutAnUnrequestedCustomFigure STATUS 0 NOMATCH "custom"
    ARGS measure ${h6})
cli_test(NAME measure.CsvLeavesAnInfiniteFigureEmpty STATUS 0
    MATCH "sfr_half_nyquist,sfr_custom,.*\n0,measured,[0-9]+,[0-9]+,80,[0-9.]+,[0-9.]+,,"
    NOMATCH "inf|nan"
    ARGS measure ${h6} --freq-divisor 0.2 --csv)

# ---- Bad numbers and files are refused with the option and its range ----
cli_test(NAME measure.RefusesANanLimit STATUS 2 MATCH "--min-sfr must be a number from 0 to 2"
    ARGS measure ${h6} --min-sfr nan)
cli_test(NAME measure.RefusesANegativeFreqDivisor STATUS 2
    MATCH "--freq-divisor must be a number above 0" ARGS measure ${h6} --freq-divisor -2)
cli_test(NAME measure.RefusesANanFreqDivisor STATUS 2
    MATCH "--freq-divisor must be a number above 0" ARGS measure ${h6} --freq-divisor nan)
cli_test(NAME measure.RefusesANonNumericWidth STATUS 2 MATCH "--width takes an integer"
    ARGS measure h6.raw --width 4k --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.RefusesAHugeWidth STATUS 2 MATCH "--width is out of range"
    ARGS measure h6.raw --width 99999999999 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME roi.RefusesANonNumericFormat STATUS 2 MATCH "--format takes an integer"
    ARGS roi reg.raw --width 80 --height 80 --format grey)
cli_test(NAME measure.ReportsADirectoryAsFrame STATUS 3 MATCH "is a directory"
    ARGS measure ${CMAKE_CURRENT_SOURCE_DIR} --width 4000 --height 3000
        --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.RefusesAnUnsupportedImageType STATUS 3
    MATCH "unsupported image type '.xyz'"
    ARGS measure frame.xyz --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME roi.RefusesAnUnsupportedImageType STATUS 3 MATCH "unsupported image type '.gif'"
    ARGS roi edge.gif)

# ---- Every argument and output path is checked before any work ----
cli_test(NAME measure.ChecksTheOverlayPathBeforeMeasuring STATUS 2
    MATCH "--overlay /nonexistent/x.png: folder /nonexistent does not exist" NOMATCH "edges"
    ARGS measure ${h6} --overlay /nonexistent/x.png)
cli_test(NAME measure.ChecksTheOverlayExtensionBeforeMeasuring STATUS 2
    MATCH "no image writer" NOMATCH "edges" ARGS measure ${h6} --overlay overlay.nope)
cli_test(NAME roi.ChecksTheCurvePathBeforeMeasuring STATUS 2
    MATCH "--curve /nonexistent/c.csv: folder" NOMATCH "status 0"
    ARGS roi ${edge} --curve /nonexistent/c.csv)
cli_test(NAME roi.ChecksThePlotPathBeforeMeasuring STATUS 2 MATCH "--plot .* is a directory"
    NOMATCH "status 0" ARGS roi ${edge} --plot ${CMAKE_CURRENT_SOURCE_DIR})
cli_test(NAME demo.ChecksTheOutputPrefixBeforeRendering STATUS 2
    MATCH "--out /nonexistent/d.png: folder" NOMATCH "rendered" ARGS demo --out /nonexistent/d)
cli_test(NAME demo.RefusesRoiZeroBeforeRendering STATUS 2 MATCH "--roi is out of range"
    NOMATCH "rendered" ARGS demo --roi 0)

# ---- The wrong chart, the wrong depth ----
cli_test(NAME measure.RefusesAK83P09BQFrameMeasuredAsHLX6C STATUS 9
    MATCH "frame does not look like the HLX6C chart \\(fit residual [0-9.]+ px; "
    ARGS measure q8.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.RefusesAnHLX6CFrameMeasuredAsK83P09BQ STATUS 9
    MATCH "frame does not look like the K83P09BQ chart"
    ARGS measure h6.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_RQ8)
cli_test(NAME measure.ReportsTheChartFitResidual STATUS 0 JSON
    MATCH "\"chart_fit_residual_px\": [0-2]\\." ARGS measure ${h6} --json)
cli_test(NAME measure.RefusesSamplesBeyondTheMemberDepth STATUS 10 MATCH "samples exceed 10 bits"
    ARGS measure h16.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.WarnsWhenSamplesAreFarBelowTheMemberDepth STATUS 0
    MATCH "warning: the largest sample, [0-9]+, is below 1/16 of 16-bit full scale"
    ARGS measure h6.raw --width 4000 --height 3000 --member talonvireoSFR_raw16_HLX6C)

# ---- roi: the members' roads, named channels ----
cli_test(NAME roi.TakesTheMalvarRoadOfTheMembers STATUS 0 MATCH "\"road\": \"malvar\""
    JSON ARGS roi h6.raw --width 4000 --height 3000 --format 0x021 --bits 10 --road malvar
        --rect 1841,1576,80,80 --json)
cli_test(NAME roi.RefusesARoadWithoutBits STATUS 2 MATCH "need --bits 10, 14 or 16"
    ARGS roi h6.raw --width 4000 --height 3000 --format 0x021 --road edge-directed)
cli_test(NAME roi.RefusesUnknownRoads STATUS 2 MATCH "unknown --road 'bilinear'"
    ARGS roi ${edge} --road bilinear)

# ---- roi: camera raw files, the curve on stdout ----
set(dng_edge h6d.dng --rect 1841,1576,80,80)
cli_test(NAME roi.ReadsADngAsItsMosaic STATUS 0 JSON
    JSON_CHECK "d['format'] == 0x022 and d['input'] == 'h6d.dng' and d['channels'][0]['channel'] == 'grey'"
    ARGS roi ${dng_edge} --json)
cli_test(NAME roi.TakesTheMembersRoadThroughADngAtItsOwnDepth STATUS 0 JSON
    JSON_CHECK "d['road'] == 'malvar' and d['format'] == 0x100 and 0.7 < d['channels'][0]['sfr_quarter_nyquist'] < 1.1"
    ARGS roi ${dng_edge} --road malvar --json)
cli_test(NAME roi.MeasuresEachRawColourPlaneOfADng STATUS 0
    MATCH "4 channels, precise method.*\n +R .*\n +Gr .*\n +Gb .*\n +B "
    ARGS roi ${dng_edge} --method precise --per-channel-raw)
cli_test(NAME roi.RefusesAFormatThatDoesNotFitADng STATUS 2
    MATCH "--format 0x100 does not fit h6d.dng: its mosaic is RGGB in 16-bit words \\(0x021\\)"
    ARGS roi ${dng_edge} --format 0x100)
cli_test(NAME roi.RefusesADngLibRawCannotRead STATUS 3 MATCH "cannot read nope.dng as camera raw"
    ARGS roi nope.dng)
cli_test(NAME roi.WritesTheCurveToStdout STATUS 0
    MATCH "^frequency,sfr_grey\n0\\.0+,1\\.0+\n([0-9.]+,[0-9.]*\n)+status 0, 1 channel"
    ARGS roi ${edge} --curve -)
cli_test(NAME roi.RefusesTheCurveOnStdoutBesideJson STATUS 2
    MATCH "--curve - and --json both write to stdout" ARGS roi ${edge} --curve - --json)

# ---- --json on a failure: still a document, with the error and the exit status ----
cli_test(NAME json.MeasureFailureIsADocumentWithTheErrorAndExitStatus STATUS 5
    MATCH "talonvireo-sfr measure: chart not located"
    JSON_CHECK "d['kind'] == 'frame' and d['input'] == 'blank.raw' and d['schema_version'] >= 1 and 'tool_version' in d and d['error'].startswith('chart not located') and '\\n' not in d['error'] and d['exit_status'] == 5"
    ARGS measure blank.raw --width 1000 --height 800 --member talonvireoSFR_raw10_HLX6C --json)
cli_test(NAME json.MeasureBadArgumentsAreADocument STATUS 2
    JSON_CHECK "d['error'].startswith('--roi must be 1 .. --mark') and d['exit_status'] == 2"
    ARGS measure ${h6} --roi 120 --json)
cli_test(NAME json.MeasurePartialCarriesTheErrorAndExitStatus STATUS 6
    JSON_CHECK "d['partial']['member_exit_status'] == 6 and d['error'].startswith('region out of bounds') and d['exit_status'] == 6 and len(d['edges']) == 52"
    ARGS measure ${crop} --partial --json)
cli_test(NAME json.MeasureCarriesItsExitStatus STATUS 1
    JSON_CHECK "d['exit_status'] == 1 and 'error' not in d" ARGS measure ${h6} --min-sfr 0.99 --json)
cli_test(NAME json.RoiFailureIsADocumentWithTheErrorAndExitStatus STATUS 7
    JSON_CHECK "d['kind'] == 'region' and d['input'] == 'g8.png' and d['error'].startswith('SFR calculation failed: edge contrast below 20 %') and d['exit_status'] == 7"
    ARGS roi g8.png --rect 0,0,80,80 --json)
cli_test(NAME json.RoiCarriesItsExitStatus STATUS 0
    JSON_CHECK "d['exit_status'] == 0 and 'error' not in d" ARGS roi ${edge} --json)

# ---- A region too small to trust is measured with a warning ----
cli_test(NAME measure.WarnsOfARegionTooSmallToTrust STATUS 0
    MATCH "warning: a region side of 30 px is below 40 px: the SFR of so small a region is unreliable"
    ARGS measure ${h6} --roi 30)
cli_test(NAME roi.WarnsOfARegionTooSmallToTrust STATUS 0
    MATCH "warning: a region side of 30 px is below 40 px: the SFR of so small a region is unreliable"
    ARGS roi g8.png --rect 1866,1596,30,40)
cli_test(NAME roi.DoesNotWarnOfAFortyPixelRegion STATUS 0 NOMATCH "warning"
    ARGS roi g8.png --rect 1861,1596,40,40)

# ---- demo: the closing summary ----
cli_test(NAME demo.EndsWithASummaryLine STATUS 0
    MATCH "summary: worst centre error [0-9.]+ px; mean SFR - truth [+-][0-9.]+ at Nyquist/4, [+-][0-9.]+ at Nyquist/2\\. The Malvar"
    ARGS demo --project K83P09BQ --out dsum)

# ---- verdicts a clipped, misplaced or dim frame cannot fool ----
cli_test(NAME measure.FailsAClippedFrameUnderLimitsAndWarns STATUS 1
    MATCH "FAIL clipped.*52 of 52 edges fail.*warning: 52 edges are clipped "
    ARGS measure bright.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --limits ${limits}/lenient.toml)
cli_test(NAME measure.AcceptsAClippedFrameWhenAsked STATUS 0
    MATCH "0 of 52 edges fail.*clipped.*accepted as asked"
    ARGS measure bright.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --limits ${limits}/lenient.toml --accept-clipped)
cli_test(NAME measure.JsonOfAClippedFrameCarriesItsWarningAndFlags STATUS 1
    JSON_CHECK "d['pass'] is False and d['clipped_share'] > 0.2 and any('clipped' in w for w in d['warnings']) and all(e['flags'] == 'clipped' for e in d['edges'])"
    ARGS measure bright.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C
        --limits ${limits}/lenient.toml --json)
cli_test(NAME measure.TellsAMisplacedChartFromAnotherChart STATUS 11
    MATCH "the HLX6C chart is in view but its edges were not all found in place"
    ARGS measure shifted.raw --width 4000 --height 3000 --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME json.AFailureDocumentCarriesTheWarningsBeforeIt STATUS 5
    JSON_CHECK "d['exit_status'] == 5 and any('below 1/16' in w for w in d['warnings'])"
    ARGS measure blank.raw --width 1000 --height 800 --member talonvireoSFR_raw16 --mark 100
        --json)
cli_test(NAME columns.PrintsTheTableOfEdgeColumns STATUS 0
    MATCH "\\| `edge` \\| integer.*\\| `clipped_share` \\| real \\| fraction \\| always"
    ARGS columns)
cli_test(NAME columns.JsonListsEveryColumn STATUS 0
    JSON_CHECK "d['kind'] == 'columns' and [c['name'] for c in d['columns']][:3] == ['edge', 'state', 'x']"
    ARGS columns --json)

# ---- measure --chart: any chart, found by itself or described ----
set(chart_data ${CMAKE_CURRENT_SOURCE_DIR}/data/charts)
cli_test(NAME measure.chart.AutoMeasuresEveryEdgeOfEveryQuadrilateral STATUS 0
    MATCH "chart auto on 4000 x 3000: 104 of 104 edges measured.*Q0\\.0.*precise method"
    ARGS measure h6.raw --width 4000 --height 3000 --bits 10 --chart auto)
cli_test(NAME measure.chart.NamesEveryMemberSlotWithABuiltInChart STATUS 0
    MATCH "chart HLX6C on 4000 x 3000: 52 of 52 edges measured.*registered: 26 shapes matched.*L1-01.*L2-26"
    ARGS measure h6.raw --width 4000 --height 3000 --bits 10 --chart hlx6c)
cli_test(NAME measure.chart.ReadsADescriptionFileAndWritesJson STATUS 0
    JSON_CHECK "len(d['edges']) == 52 and d['edges'][0]['name'] == 'L1-01' and all(e['state'] == 'measured' for e in d['edges']) and 0.3 < d['edges'][0]['sfr_quarter_nyquist'] < 1"
    ARGS measure h6.raw --width 4000 --height 3000 --bits 10
        --chart ${PROJECT_SOURCE_DIR}/charts/HLX6C.toml --json)
cli_test(NAME measure.chart.ReadsMipiRaw10 STATUS 0 MATCH "104 of 104 edges measured"
    ARGS measure h6m.raw --width 4000 --height 3000 --packing mipi10 --chart auto)
cli_test(NAME measure.chart.ReadsAnEightBitGreyImage STATUS 0 MATCH "104 of 104 edges measured"
    ARGS measure g8.png --chart auto)
cli_test(NAME measure.chart.ReadsADng STATUS 0 MATCH "52 of 52 edges measured"
    ARGS measure h6d.dng --chart HLX6C)
cli_test(NAME measure.chart.WritesCsvAndAnOverlay STATUS 0
    MATCH "^edge,state,x,y,side,name,centre_x,centre_y,angle_deg,length_px,bow_px"
    FILES chart-overlay.png
    ARGS measure h6.raw --width 4000 --height 3000 --bits 10 --chart auto --csv
        --overlay chart-overlay.png --overlay-width 800)
cli_test(NAME measure.chart.GradesEdgesAgainstAMinimum STATUS 1 MATCH "104 of 104 edges below SFR N/4 0.990"
    ARGS measure h6.raw --width 4000 --height 3000 --bits 10 --chart auto --min-sfr 0.99)
cli_test(NAME measure.chart.AFrameWithoutQuadrilateralsHasAStatusOfItsOwn STATUS 12
    MATCH "no dark-on-light or light-on-dark quadrilateral found in the frame"
    ARGS measure blank.raw --width 1000 --height 800 --bits 10 --chart auto)
cli_test(NAME measure.chart.AnotherChartDoesNotRegister STATUS 9
    MATCH "frame does not look like the HLX6C chart"
    ARGS measure q8.raw --width 4000 --height 3000 --bits 10 --chart HLX6C)
cli_test(NAME measure.chart.AMalformedDescriptionNamesItsLineAndKey STATUS 2
    MATCH "misspelt-key.toml:13: slot\\[0\\].alng: unknown key"
    ARGS measure h6.raw --width 4000 --height 3000 --bits 10
        --chart ${chart_data}/misspelt-key.toml)
cli_test(NAME measure.chart.AnUnknownChartListsTheBuiltIns STATUS 2
    MATCH "K74T16BX.*K83P09BQ.*HLX6C.*K31R22BX"
    ARGS measure h6.raw --width 4000 --height 3000 --chart NOPE)
cli_test(NAME measure.chart.ExcludesAMember STATUS 2 MATCH "--member and --chart exclude each other"
    ARGS measure h6.raw --width 4000 --height 3000 --chart auto
        --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME measure.chart.RefusesSamplesDeeperThanItsBits STATUS 10 MATCH "above 10-bit full scale"
    ARGS measure h16.raw --width 4000 --height 3000 --bits 10 --chart auto)
cli_test(NAME batch.chart.RecordsEveryEdgeOfEveryFrame STATUS 1
    MATCH "measured  1.*errors    1.*wrong chart"
    FILES chart.sqlite chart.csv
    ARGS batch h6.raw q8.raw --width 4000 --height 3000 --bits 10 --chart HLX6C
        --db chart.sqlite --csv chart.csv)

# ---- render --chart with the focus model: a stack, its list and its truth ----
cli_test(NAME render.WritesAFocusStackWithItsListAndTruth FIXTURE STATUS 0
    MATCH "HLX6C chart, 4000 x 3000, 10 bits Bayer RG, .*, 9 focus positions -15 \\.\\. 25 um: rendered in .*\nwrote fstack-00\\.raw \\.\\. fstack-08\\.raw, fstack\\.png, fstack\\.csv, fstack\\.json"
    FILES fstack-00.raw fstack-08.raw fstack.png fstack.csv fstack.json JSON_FILES fstack.json
    ARGS render --chart HLX6C --bits 10 --bayer --sigma 0.8 --focus-stack -15:25:5 --best-focus 5
        --focus-slope-x 3 --focus-slope-y -2 --astigmatism 4 --read-noise 1 --out fstack)
# Each edge's foci: T - S = a rho^2, its best focus between them, and its sigma at the position
# nearest best focus at least the focused one widened by its own defocus there.
add_test(NAME Cli.render.FocusStackTruthGivesEveryEdgesFoci
    COMMAND python3 -c "import json, sys
d = json.load(open('fstack.json'))
f = d['focus']
lines = open('fstack.csv').read().split()
rho2 = lambda e: ((e['x'] - 1999.5) ** 2 + (e['y'] - 1499.5) ** 2) / 2500.0 ** 2
low = lambda e: min(e['tangential_z_um'], e['sagittal_z_um']) - 1e-9
high = lambda e: max(e['tangential_z_um'], e['sagittal_z_um']) + 1e-9
ok = (f['positions_um'] == list(range(-15, 30, 5)) and 'lens_z_um' not in f
      and f['best_focus_z_um'] == 5 and f['slope_x_um_per_mm'] == 3 and f['astigmatism_um'] == 4
      and f['defocus_gain_px_per_um'] == 0.1 and f['pixel_pitch_um'] == 1.4
      and len(d['edges']) == 52
      and all(abs(e['tangential_z_um'] - e['sagittal_z_um'] - 4 * rho2(e)) < 1e-9 for e in d['edges'])
      and all(low(e) <= e['best_focus_z_um'] <= high(e) for e in d['edges'])
      and all(e['sigma'] ** 2 >= 0.64 + 0.01 * (5 - e['best_focus_z_um']) ** 2 - 1e-9 for e in d['edges'])
      and all(abs(e['x_mm'] - (e['x'] - 1999.5) * 1.4e-3) < 1e-9 for e in d['edges'])
      and lines == ['file,z'] + ['fstack-%02d.raw,%d' % (i, z) for i, z in enumerate(range(-15, 30, 5))])
sys.exit(0 if ok else 'the stack truth or list is wrong: ' + json.dumps(f) + ' ' + ' '.join(lines))"
    WORKING_DIRECTORY ${cli_dir})
set_tests_properties(Cli.render.FocusStackTruthGivesEveryEdgesFoci
    PROPERTIES FIXTURES_REQUIRED CliFrames)
cli_test(NAME focus.FindsTheSurfaceOfARenderedStackFromItsList STATUS 0
    JSON_CHECK "abs(d['surface']['best_focus_z_um'] - 5) < 0.5 and abs(d['surface']['slope_x_um_per_mm'] - 3) < 0.3 and abs(d['surface']['slope_y_um_per_mm'] + 2) < 0.3 and len(d['edges']) == 52"
    ARGS focus --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000 --pixel-pitch 1.4um
        --z-list fstack.csv --json)
cli_test(NAME render.WritesOneFrameAtALensPosition STATUS 0
    MATCH "HLX6C chart, 800 x 600, 8 bits, .*, focus at 12\\.5 um: rendered in .*\nwrote fz\\.raw, fz\\.png, fz\\.json"
    FILES fz.raw fz.json JSON_FILES fz.json
    ARGS render --chart HLX6C --bits 8 --width 800 --height 600 --focus-z 12.5
        --focus-curvature -1 --pixel-pitch 1120nm --out fz)
cli_test(NAME render.RefusesAMalformedFocusStack STATUS 2
    MATCH "--focus-stack takes FROM:TO:STEP in um, such as -20:20:2\\.5, not '-20:20'"
    ARGS render --chart HLX6C --focus-stack -20:20 --out x)
cli_test(NAME render.RefusesAFocusStackOfMoreThan61Positions STATUS 2
    MATCH "--focus-stack '-100:100:1' gives 201 positions, at most 61"
    ARGS render --chart HLX6C --focus-stack -100:100:1 --out x)
cli_test(NAME render.RefusesAFocusStackRunningDown STATUS 2 MATCH "TO is below FROM"
    ARGS render --chart HLX6C --focus-stack 20:-20:2 --out x)
cli_test(NAME render.FocusZAndFocusStackExcludeEachOther STATUS 2
    MATCH "--focus-z and --focus-stack exclude each other"
    ARGS render --chart HLX6C --focus-z 0 --focus-stack -20:20:2.5 --out x)
cli_test(NAME render.BestFocusNeedsALensPosition STATUS 2
    MATCH "--best-focus needs --focus-z or --focus-stack"
    ARGS render --chart HLX6C --best-focus 5 --out x)
cli_test(NAME render.RefusesADefocusBeyondFiftyPixels STATUS 2
    MATCH "at lens position 100 um the defocus blurs the frame to sigma 100 px, beyond 50"
    ARGS render --chart HLX6C --focus-z 100 --defocus-gain 1 --out x)

# ---- focus: a through-focus stack, best focus 5 um (sigma^2 = 0.8^2 + (0.05 (z - 5))^2) ----
foreach(step "m15;1.2806" "m5;0.9434" "p5;0.8" "p15;0.9434" "p35;1.7")
    list(GET step 0 name)
    list(GET step 1 sigma)
    cli_test(NAME render.WritesFocusStackFrame.${name} FIXTURE STATUS 0 FILES focus-${name}.raw
        ARGS render --project HLX6C --bits 10 --bayer --sigma ${sigma} --out focus-${name})
endforeach()
cli_test(NAME focus.FindsEveryEdgesBestFocusAndAFlatSurface STATUS 0
    JSON_CHECK "len(d['edges']) == 52 and all(abs(e['best_focus_z_um'] - 5) < 1.5 for e in d['edges']) and abs(d['surface']['best_focus_z_um'] - 5) < 1 and abs(d['surface']['tilt_about_x_arcmin']) < 0.5 and abs(d['surface']['tilt_about_y_arcmin']) < 0.5"
    ARGS focus --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000 --pixel-pitch 1.4um
        focus-m15.raw@-15 focus-m5.raw@-5 focus-p5.raw@5 focus-p15.raw@15 focus-p35.raw@35 --json)
cli_test(NAME focus.PrintsTheSurfaceAndTheWindow STATUS 0
    MATCH "through focus: 5 frames.*zone centre tangential.*surface: best focus.*common focus window"
    ARGS focus --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000 --pixel-pitch 1.4um
        focus-m15.raw@-15 focus-m5.raw@-5 focus-p5.raw@5 focus-p15.raw@15 focus-p35.raw@35
        --min-sfr 0.5)
cli_test(NAME focus.DrawsTheCurvesAndTheMap STATUS 0 MATCH "wrote fp-curves.png, fp-map.png"
    FILES fp-curves.png fp-map.png
    ARGS focus --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000 --pixel-pitch 1.4um
        focus-m15.raw@-15 focus-m5.raw@-5 focus-p5.raw@5 focus-p15.raw@15 focus-p35.raw@35
        --plot fp)
cli_test(NAME focus.live.RefusesFrameFilesBesideTheFeed STATUS 2
    MATCH "--live reads its frames from standard input"
    ARGS focus --live --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000
        focus-m5.raw@-5)
cli_test(NAME focus.live.NeedsTheFrameSize STATUS 2 MATCH "--live needs --width and --height"
    ARGS focus --live --member talonvireoSFR_raw10_HLX6C)
cli_test(NAME focus.live.ReadsUnpackedWordsOnly STATUS 2 MATCH "16-bit words, unpacked"
    ARGS focus --live --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000
        --packing mipi10)
cli_test(NAME render.FocusGoesWithAChartDescription STATUS 2 MATCH "--focus-z goes with --chart"
    ARGS render --project HLX6C --focus-z 5 --out x)
cli_test(NAME focus.NeedsThreeFrames STATUS 2 MATCH "three frames or more"
    ARGS focus --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000 --pixel-pitch 1.4um
        focus-m5.raw@-5 focus-p5.raw@5)
cli_test(NAME focus.NeedsAPixelPitch STATUS 2 MATCH "--pixel-pitch is required"
    ARGS focus --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000 focus-m5.raw@-5)
cli_test(NAME focus.RefusesAFrameWithoutItsPosition STATUS 2 MATCH "is no FILE@Z"
    ARGS focus --member talonvireoSFR_raw10_HLX6C --width 4000 --height 3000 --pixel-pitch 1.4um
        focus-m5.raw)
cli_test(NAME focus.RefusesChartsWhoseEdgesDoNotKeepTheirSlot STATUS 2 MATCH "not --chart auto"
    ARGS focus --chart auto --width 4000 --height 3000 --pixel-pitch 1.4um focus-m5.raw@-5)
