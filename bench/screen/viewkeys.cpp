// The keys of the live view.
#include "bench/screen/liveview.h"

namespace bench {

namespace {

constexpr ViewKey kKeys[] = {
    {'1', "left front door", "toggle door.left_front"},
    {'2', "right front door", "toggle door.right_front"},
    {'3', "left rear door", "toggle door.left_rear"},
    {'4', "right rear door", "toggle door.right_rear"},
    {'5', "tailgate", "toggle door.rear"},
    {'r', "obstacle behind, nearer",
     "change radar.rear.middle_left by -5, radar.rear.middle_right by -5"},
    {'R', "obstacle behind, farther",
     "change radar.rear.middle_left by 5, radar.rear.middle_right by 5"},
    {'f', "obstacle in front, nearer",
     "change radar.front.left by -5, radar.front.middle_left by -5"},
    {'F', "obstacle in front, farther",
     "change radar.front.left by 5, radar.front.middle_left by 5"},
    {'k', "wheel key 5, short", "press 5"},
    {'K', "hold wheel key 5", "hold 5"},
    {'l', "let it go", "release"},
    {'o', "climate on and off", "call climate_key power"},
    {'c', "air conditioning", "call climate_key ac"},
    {'a', "automatic", "call climate_key auto"},
    {'+', "warmer", "call climate_key left_warmer"},
    {'-', "cooler", "call climate_key left_cooler"},
    {']', "more air", "call climate_key fan_up"},
    {'[', "less air", "call climate_key fan_down"},
    {'b', "next blowing mode", "call climate_key blowing_mode"},
    {'d', "rear defrost", "call climate_key rear_defrost"},
    {'i', "ambient light brighter", "call car_setting ambient_level 1"},
    {'I', "ambient light dimmer", "call car_setting ambient_level -1"},
    {'n', "next ambient colour", "call car_setting ambient_colour next"},
    {'u', "temperature unit", "call unit temperature"},
    {'p', "pressure unit", "call unit pressure"},
    {'m', "report station and clock", "call source FM1 0 87.50MHz\ncall clock 2025-06-15 10:30"},
    {'v', "ask for every report",
     "call request climate\ncall request park_assist\ncall request vehicle_info\n"
     "call request car_setting\ncall request unit_settings"},
    {'s', "the box falls silent", "silence"},
    {'S', "the box speaks again", "speak"},
    {'x', "unplug the box", "unplug"},
    {'X', "plug it in again", "plug"},
};

} // namespace

Span<ViewKey> viewKeys() { return kKeys; }

} // namespace bench
