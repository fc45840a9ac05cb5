# Writes a workbook of dates, times and durations, .xls or .xlsx as its name ends; with a second argument one
# that counts its days from 1904.
use strict;
use warnings;

my $writer = $ARGV[0] =~ /\.xlsx$/ ? 'Excel::Writer::XLSX' : 'Spreadsheet::WriteExcel';
eval "require $writer" or die $@;
my $book = $writer->new($ARGV[0]) or die "$ARGV[0]: $!";
$book->set_1904 if $ARGV[1];
my $sheet = $book->add_worksheet('Horas');
$sheet->write_string(0, 0, 'N');
my $row = 0;
$sheet->write_number(++$row, 0, $_->[0], $book->add_format(num_format => $_->[1]))
    for [1.5, '[h]:mm:ss'], [46346.5, '[h]:mm'], [0, '[h]:mm'], [0.0208333333333333, '[mm]:ss'],
        [46346.25, 'hh:mm:ss'], [46346.25, 'mm:ss'], [0.9999999, 'hh:mm:ss'], [0, 'hh:mm'],
        [0.3958391, 'hh:mm:ss.000'], [0, 'dd/mm/yyyy'], [0, 'dd/mm/yyyy hh:mm'],
        [0.395833333333, 'dd/mm/yyyy hh:mm'], [46346.4999999, 'dd/mm/yyyy hh:mm:ss'],
        [46346.5000081, 'dd/mm/yyyy hh:mm:ss'], [46346.25, 'mmm'], [46346.25, 'd mmm hh:mm AM/PM'],
        [-0.5, '[h]:mm:ss'];
$book->close;
