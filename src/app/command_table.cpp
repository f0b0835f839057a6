#include "app/command_table.h"

#include "browse/browse.h"
#include "qubes/qubes.h"
#include "tables/tables.h"

#include <array>

namespace {

void open_product(Window *) {
    open_object(0);
}

void open_moc(Window *) {
    open_moc_object();
}

void quit(Window *) {
    if (is_quit_OK())
        gui_quit();
}

void save(Window *window) {
    save_text(window);
}

void save_as(Window *window) {
    save_text_as(window);
}

void close_window(Window *window) {
    gui_destroy_window(window);
}

constexpr auto application = CommandDispatcher::Application;
constexpr auto label = CommandDispatcher::Label;
using enum CommandScope;

constexpr std::array rows = {
    CommandRow{1002, label, Any, open_product},
    CommandRow{1003, label, Any, close_text_window},
    CommandRow{1004, label, Label, save},
    CommandRow{1005, label, Label, save_as},
    CommandRow{1007, application, Any, open_product},
    CommandRow{1008, application, Image, close_window},
    CommandRow{1008, application, Table, close_window},
    CommandRow{1011, application, Any, quit},
    CommandRow{1021, label, Any, show_about},
    CommandRow{1023, application, Indexed, menu2_undo_display},
    CommandRow{1026, label, Any, quit},
    CommandRow{1027, application, Indexed, menu2_image_invert},
    CommandRow{1028, application, Indexed, menu2_stretch_image},
    CommandRow{1030, application, Any, open_text_file_or_end},
    CommandRow{1031, label, Any, open_text_file},
    CommandRow{1032, application, Any, parse_time_dialog},
    CommandRow{1033, label, Any, autobros},
    CommandRow{1042, application, Indexed, menu2_stretch_display},
    CommandRow{1047, application, Image, show_hierarchy},
    CommandRow{1047, application, Table, show_hierarchy},
    CommandRow{1048, application, Image, show_keywords},
    CommandRow{1048, application, Table, show_keywords},
    CommandRow{1050, application, Indexed, show_histogram},
    CommandRow{1051, application, Image, open_full_label},
    CommandRow{1051, application, Table, open_full_label},
    CommandRow{1052, application, Qube, show_suffix_list},
    CommandRow{1053, application, Bands, choose_bands},
    CommandRow{1054, application, Qube, show_qube_control},
    CommandRow{1056, application, Bands, choose_band_limits},
    CommandRow{1057, application, Image, toggle_hexadecimal},
    CommandRow{1059, label, Label, toggle_line_end_marks},
    CommandRow{1060, application, Any, open_moc},
    CommandRow{1061, application, Any, autobros},
    CommandRow{1064, application, Image, step_right},
    CommandRow{1066, application, Any, open_new_fits_label},
    CommandRow{1067, application, Any, open_new_label},
    CommandRow{1069, label, Any, open_new_fits_label},
    CommandRow{1070, label, Any, open_new_label},
    CommandRow{1071, application, Image, step_left},
    CommandRow{1072, application, Image, step_down},
    CommandRow{1073, application, Image, step_up},
    CommandRow{1074, application, Image, choose_block},
    CommandRow{1076, application, Any, show_about},
    CommandRow{2001, application, Image, zoom_in},
    CommandRow{2002, application, Image, zoom_out},
    CommandRow{2003, application, Image, zoom_actual},
    CommandRow{2004, application, Image, zoom_to_fit},
    CommandRow{2005, application, Image, copy_read_out},
    CommandRow{2010, application, Indexed, choose_palette<0>},
    CommandRow{2011, application, Indexed, choose_palette<1>},
    CommandRow{2012, application, Indexed, choose_palette<2>},
    CommandRow{2013, application, Indexed, choose_palette<3>},
    CommandRow{2014, application, Indexed, choose_palette<4>},
    CommandRow{2015, application, Indexed, choose_palette<5>},
    CommandRow{2016, application, Indexed, choose_palette<6>},
    CommandRow{2017, application, Indexed, choose_palette<file_palette>},
    CommandRow{2020, application, Table, show_side_data},
    CommandRow{2021, application, Table, next_row_page},
    CommandRow{2022, application, Table, previous_row_page},
    CommandRow{2023, application, Table, next_column_page},
    CommandRow{2024, application, Table, previous_column_page},
    CommandRow{2025, application, Table, go_to_row},
    CommandRow{2026, application, Table, show_paging_dialog},
    CommandRow{2030, application, Table, browse_columns},
    CommandRow{2031, application, Table, tbtool_next_rows},
    CommandRow{2032, application, Table, tbtool_prev_rows},
    CommandRow{2033, application, Table, tbtool_first_rows},
    CommandRow{2034, application, Table, tbtool_last_rows},
    CommandRow{2035, application, Table, tbtool_enter_row},
    CommandRow{2036, application, Table, tbtool_next_cols},
    CommandRow{2037, application, Table, tbtool_prev_cols},
    CommandRow{2038, application, Table, tbtool_enter_skip},
    CommandRow{2039, application, Table, tbtool_enter_name},
    CommandRow{2040, application, Table, tbtool_next_table},
    CommandRow{2041, application, Table, tbtool_prev_table},
    CommandRow{2042, application, Table, tbtool_toggle_items},
    CommandRow{2043, application, Table, tbtool_toggle_bit_cols},
    CommandRow{2044, application, Table, tbtool_show_text},
    CommandRow{2045, application, Table, tbtool_show_binary},
    CommandRow{2046, application, Table, tbtool_show_hex},
    CommandRow{2047, application, Table, tbtool_show_octal},
    CommandRow{2048, application, Table, tbtool_get_summary},
    CommandRow{2060, application, Table, plot_table_columns},
    CommandRow{2061, label, Any, show_detailed_plot},
    CommandRow{2062, label, Any, toggle_curve_lines},
    CommandRow{2063, label, Any, toggle_curve_points},
    CommandRow{2064, label, Any, toggle_curve_grid},
    CommandRow{2065, label, Any, save_curves_as_png},
    CommandRow{2066, label, Any, save_curves_as_svg},
    CommandRow{2067, label, Any, save_curves_as_csv},
    CommandRow{2070, application, Qube, show_next_band},
    CommandRow{2071, application, Qube, show_previous_band},
    CommandRow{2080, application, Qube, keep_spectrum},
    CommandRow{2080, label, Any, keep_spectrum},
    CommandRow{2081, application, Qube, remove_kept_spectra},
    CommandRow{2081, label, Any, remove_kept_spectra},
    CommandRow{2090, application, Any, show_window_help},
    CommandRow{2090, label, Any, show_window_help},
    CommandRow{2091, application, Any, show_keyboard_help},
    CommandRow{2091, label, Any, show_keyboard_help},
};

}  // namespace

std::span<const CommandRow> lumacart_commands() {
    return rows;
}
