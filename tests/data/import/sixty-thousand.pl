# Writes a workbook of 60,000 rows, for measuring.
use strict;
use warnings;
use Spreadsheet::WriteExcel;

my $book = Spreadsheet::WriteExcel->new($ARGV[0]) or die "$ARGV[0]: $!";
my $sheet = $book->add_worksheet('Hoja1');
$sheet->write_string(0, 0, 'Num');
$sheet->write_number($_, 0, 600_000_000 + $_) for 1 .. 60_000;
$book->close;
