#include "Cli/ManPage.h"

namespace ringwell::cli {

std::string roffEscaped(std::string_view text) {
    std::string out;
    bool lineStart = true;
    for (char c : text) {
        if (lineStart && (c == '.' || c == '\''))
            out += "\\&";
        lineStart = c == '\n';
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
    }
    return out;
}

std::string manPage(std::span<const Command* const> commands, std::string_view version) {
    std::string page;
    page += ".TH RINGWELL 1 \"\" \"ringwell " + roffEscaped(version) + "\" \"User Commands\"\n";
    page += ".SH NAME\nringwell \\- notifications you must not miss, rung as alarms\n";
    page += ".SH SYNOPSIS\n.B ringwell\n\\fIcommand\\fR [\\fIoptions\\fR]\n.br\n"
            ".B ringwell\n\\fIcommand\\fR \\-\\-help\n.br\n.B ringwell\n\\-\\-version\n";
    page += ".SH DESCRIPTION\n"
            "Ringwell turns the few notifications you must not miss into alarms that ring "
            "through silence and do\\-not\\-disturb. Its daemon (started by\n"
            ".B ringwell serve\n"
            "or by the systemd user units ringwell.socket and ringwell.service) captures the "
            "desktop's notifications, rings alarms and serves a web app on 127.0.0.1; "
            "every other command is a client of its local API.\n";
    page += ".SH COMMANDS\n";
    for (const Command* command : commands) {
        page += ".SS \"" + roffEscaped(command->name) + "\"\n";
        page += roffEscaped(command->summary) + ".\n";
        page += ".PP\n.nf\n" + roffEscaped(command->help) + ".fi\n";
    }
    page += ".SH EXIT STATUS\n"
            ".TP\n0\nsuccess\n"
            ".TP\n1\nthe action failed (for rule explain: the rule does not match)\n"
            ".TP\n2\nusage error or bad input\n"
            ".TP\n3\nthe daemon is not running\n";
    page += ".SH ENVIRONMENT\n"
            ".TP\nXDG_DATA_HOME\nchannels, history, alarms and tones (ringwell/)\n"
            ".TP\nXDG_CONFIG_HOME\nsettings and the web app's token (ringwell/)\n"
            ".TP\nXDG_RUNTIME_DIR\nthe daemon's socket (ringwell/ringwell.sock)\n"
            ".TP\nTZ\nthe time zone of active hours\n";
    page += ".SH SEE ALSO\n"
            ".BR systemctl (1),\n.BR journalctl (1),\n.BR xdg\\-open (1)\n";
    return page;
}

} // namespace ringwell::cli
