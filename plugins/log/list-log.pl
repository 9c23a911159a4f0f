#!/usr/bin/perl
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-log.pl [--unit=NAME] [--file=PATH] [--since=TIME] [--level=N] [--lines=N]
#
# Prints time, level, source and text of each line, each ended by a NUL. Lines of a file have a time
# when they begin with one, and the level that a word of theirs names.
use strict;
use warnings;
use POSIX qw(mktime strftime);

# Ends with a complaint of one line.
sub fail {
    my ($text) = @_;
    $text =~ tr/\n/ /;
    die "$text\n";
}

my %option = (lines => 50, level => 7);
for my $argument (@ARGV) {
    $option{$1} = $2 if $argument =~ /^--(unit|file|since|level|lines)=(.*)$/s;
}

$option{$_} = int $option{$_} for qw(lines level);

my %month;
@month{qw(Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)} = 0 .. 11;

# Seconds since the epoch; nothing for a day that no calendar has.
sub seconds_at {
    my ($year, $month, $day, $hour, $minute, $second) = @_;
    my $time = mktime($second, $minute, $hour, $day, $month, $year - 1900, 0, 0, -1);
    return undef unless defined $time && $hour < 24 && $minute < 60 && $second < 61;
    return (localtime $time)[4] == $month ? $time : undef;
}

# The time that a text begins with, as people and log files write it; nothing for other texts.
sub seconds {
    my ($text) = @_;
    if ($text =~ /^(\d{4})-(\d\d)-(\d\d)(?:[T ](\d\d):(\d\d)(?::(\d\d))?)?/) {
        return undef unless $2 >= 1 && $3 >= 1;
        return seconds_at($1, $2 - 1, $3, $4 // 0, $5 // 0, $6 // 0);
    }
    if ($text =~ /^([A-Z][a-z]{2})\s+(\d{1,2}) (\d\d):(\d\d):(\d\d)/ && exists $month{$1}) {
        my ($this_month, $year) = (localtime)[4, 5];
        # Such a line names no year: it is the latest one that has been.
        my $line_year = 1900 + ($month{$1} > $this_month ? $year - 1 : $year);
        return seconds_at($line_year, $month{$1}, $2, $3, $4, $5);
    }
    return undef;
}

sub level {
    my ($text) = @_;
    return 0 if $text =~ /\b(?:emerg|emergency|panic)\b/i;
    return 1 if $text =~ /\balert\b/i;
    return 2 if $text =~ /\b(?:crit|critical|fatal)\b/i;
    return 3 if $text =~ /\b(?:err|error|failed|failure)\b/i;
    return 4 if $text =~ /\b(?:warn|warning)\b/i;
    return 5 if $text =~ /\bnotice\b/i;
    return 7 if $text =~ /\bdebug\b/i;
    return 6;
}

my (@lines, $since);

sub keep {
    push @lines, \@_;
    shift @lines if @lines > $option{lines};
}

sub read_file {
    my ($path) = @_;
    fail("$path is no file") unless -f $path;
    open my $file, '<', $path or fail("You may not read $path");
    (my $source = $path) =~ s{.*/}{};
    my $time;
    while (my $line = <$file>) {
        chomp $line;
        # A line without a time belongs to the one before it.
        $time = seconds($line) // $time;
        next if defined $since && (!defined $time || $time < $since);
        my $level = level($line);
        next if $level > $option{level};
        keep(defined $time ? strftime('%Y-%m-%d %H:%M:%S', localtime $time) : '', $level, $source,
            $line);
    }
}

sub read_journal {
    fail('This command needs the tool journalctl (package systemd), which is not installed')
        unless grep { -x "$_/journalctl" } split /:/, $ENV{PATH} // '';
    my @command = ('journalctl', '--no-pager', '--quiet', '--output=json',
        '--output-fields=PRIORITY,SYSLOG_IDENTIFIER,MESSAGE', "--lines=$option{lines}",
        "--priority=$option{level}");
    push @command, "--unit=$option{unit}"   if defined $option{unit};
    push @command, "--since=$option{since}" if defined $option{since};
    open my $journal, '-|', @command or fail("journalctl: $!");
    while (my $line = <$journal>) {
        my $time = $line =~ /"__REALTIME_TIMESTAMP"\s*:\s*"(\d+)"/ ? $1 / 1e6 : 0;
        my $level = $line =~ /"PRIORITY"\s*:\s*"(\d)"/ ? $1 : 6;
        keep(strftime('%Y-%m-%d %H:%M:%S', localtime $time), $level,
            text($line, 'SYSLOG_IDENTIFIER'), text($line, 'MESSAGE'));
    }
    close $journal or fail('journalctl failed');
}

# The text of one field of a line of the journal: a JSON string, or numbers of bytes.
sub text {
    my ($line, $name) = @_;
    if ($line =~ /"$name"\s*:\s*\[([\d,\s]*)\]/) {
        return join '', map { chr } split /\s*,\s*/, $1;
    }
    return '' unless $line =~ /"$name"\s*:\s*"((?:[^"\\]|\\.)*)"/;
    my $text = $1;
    my %short = (n => "\n", t => "\t", r => "\r", b => "\b", f => "\f");
    $text =~ s{\\(?:u([0-9a-fA-F]{4})|(.))}{
        defined $1 ? do { my $c = chr hex $1; utf8::encode($c); $c } : $short{$2} // $2
    }ge;
    return $text;
}

$since = defined $option{since} ? seconds($option{since}) : undef;
fail("There is no such time: $option{since}") if defined $option{since} && !defined $since;
defined $option{file} ? read_file($option{file}) : read_journal();

binmode STDOUT;
for my $line (@lines) {
    for my $field (@$line) {
        (my $text = $field) =~ s/\0/\\x00/g;
        print "$text\0";
    }
}
