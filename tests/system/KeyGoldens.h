#pragma once

// What the keys of a launch leave in the log: pieces of goldens.
namespace test {

inline constexpr char windowsQIsPressed[] = R"(
    CQanhKeyEmulate::SendInput_Win_Q IN
    CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000001) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x0051, 0x0010, 0x00000008) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x0051, 0x0010, 0x00000002) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x005B, 0x00000002) IN ... OUT
    CQanhKeyEmulate::SendInput_Win_Q OUT
)";

inline constexpr char shiftInsertIsPressed[] = R"(
    CQanhKeyEmulate::SendInput_Shift_Insert IN
    CQanhKeyEmulate::Sendinput_Key(0x0010, 0x002A, 0x00000000) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x002D, 0x0052, 0x00000001) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x002D, 0x0052, 0x00000003) IN ... OUT
    CQanhKeyEmulate::SendInput_Shift_Insert OUT
)";

inline constexpr char enterIsPressed[] = R"(
    CQanhKeyEmulate::SendInput_Enter IN
    CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000001) IN ... OUT
    CQanhKeyEmulate::Sendinput_Key(0x000D, 0x00000002) IN ... OUT
    CQanhKeyEmulate::SendInput_Enter OUT
)";

} // namespace test
