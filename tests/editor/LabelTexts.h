#pragma once

#include <utility>

namespace tavril {

/// The main screen's 31 labels with the keys of their texts, in the order in which a layout pass sets them.
inline constexpr std::pair<const char *, const char16_t *> labelTexts[]{
    {"setting_list", u"setting_list"},
    {"motor_parameter", u"motor_parameter"},
    {"value_setting", u"value_setting"},
    {"sid", u"sid"},
    {"ack_policy", u"ack_policy"},
    {"alarm_led_policy", u"alarm_led_policy"},
    {"torque_policy", u"torque_policy"},
    {"max_temperature", u"max_tempertaure"},
    {"min_volt", u"min_voltage"},
    {"max_volt", u"max_voltage"},
    {"max_load", u"max_load"},
    {"kp", u"kp"},
    {"ki", u"ki"},
    {"kd", u"kd"},
    {"over_temperature", u"over_temperature"},
    {"over_volt", u"over_voltage"},
    {"over_load", u"over_load"},
    {"calibretion_angle", u"calibration_angle"},
    {"status_error", u"status_error"},
    {"status_detail", u"status_detail"},
    {"present_volt", u"present_voltage"},
    {"present_temperature", u"present_temperature"},
    {"present_load", u"present_load"},
    {"motor_kx_90", u"motor_kx_90"},
    {"position", u"position"},
    {"relax", u"relax"},
    {"capture", u"capture"},
    {"motor_set", u"motor_set"},
    {"detail_about", u"detail_about"},
    {"read", u"read"},
    {"detail_set", u"detail_set"},
};

}  // namespace tavril
