#include "editor/ScreenLabels.h"

#include <array>

namespace tavril {

namespace {

// Kept: C58.
constexpr std::array<ScreenLabel, 31> labels{{
    {u"setting_list", u"setting_list"},
    {u"motor_parameter", u"motor_parameter"},
    {u"value_setting", u"value_setting"},
    {u"sid", u"sid"},
    {u"ack_policy", u"ack_policy"},
    {u"alarm_led_policy", u"alarm_led_policy"},
    {u"torque_policy", u"torque_policy"},
    {u"max_temperature", u"max_tempertaure"},
    {u"min_volt", u"min_voltage"},
    {u"max_volt", u"max_voltage"},
    {u"max_load", u"max_load"},
    {u"kp", u"kp"},
    {u"ki", u"ki"},
    {u"kd", u"kd"},
    {u"over_temperature", u"over_temperature"},
    {u"over_volt", u"over_voltage"},
    {u"over_load", u"over_load"},
    {u"calibretion_angle", u"calibration_angle"},
    {u"status_error", u"status_error"},
    {u"status_detail", u"status_detail"},
    {u"present_volt", u"present_voltage"},
    {u"present_temperature", u"present_temperature"},
    {u"present_load", u"present_load"},
    {u"motor_kx_90", u"motor_kx_90"},
    {u"position", u"position"},
    {u"relax", u"relax"},
    {u"capture", u"capture"},
    {u"motor_set", u"motor_set"},
    {u"detail_about", u"detail_about"},
    {u"read", u"read"},
    {u"detail_set", u"detail_set"},
}};

}  // namespace

std::span<const ScreenLabel> screenLabels() {
  return labels;
}

}  // namespace tavril
