# Writes the workbook that the other spreadsheets of this folder are converted from.
use strict;
use warnings;
use utf8;
use Spreadsheet::WriteExcel;

my $book = Spreadsheet::WriteExcel->new($ARGV[0]) or die "$ARGV[0]: $!";
my $date = $book->add_format(num_format => 'dd/mm/yyyy');
my $moment = $book->add_format(num_format => 'dd/mm/yyyy hh:mm');
my $time = $book->add_format(num_format => 'hh:mm:ss');

my $sheet = $book->add_worksheet('Contactos');
my $column = 0;
$sheet->write_string(0, $column++, $_)
    for ('Nombre', "Tel\x{e9}fono", 'Nombre', '', 'Fecha', 'Hora', 'Cifra', 'Suma');
$sheet->write_string(1, 0, "Jos\x{e9}");
$sheet->write_number(1, 1, 912345678);
$sheet->write_string(1, 2, 'Pepe');
$sheet->write_string(1, 3, 'sin nombre');
$sheet->write_number(1, 4, 46346, $date);         # 2026-11-20
$sheet->write_number(1, 5, 0.395833333333, $time); # 09:30:00
$sheet->write_number(1, 6, 0.1);
$sheet->write_formula(1, 7, '=B2+1', undef, 912345679);
$sheet->write_string(2, 0, 'Ana');
$sheet->write_string(2, 1, '912 345-678');
$sheet->write_number(2, 4, 46346.5, $moment);     # 2026-11-20 12:00
$sheet->write_number(2, 6, 351912345678901);
$sheet->write_formula(2, 7, '=A3&"!"', undef, 'Ana!');
# Row 4 is empty.
$sheet->write_string(4, 0, 'Rui');
$sheet->write_string(4, 1, '   ');
$sheet->write_number(4, 6, -2.5);
$sheet->write_number(5, 1, 34600123456);
$sheet->write_string(5, 9, 'lejos');
$sheet->set_row(5, undef, undef, 1); # hidden
my $merged = $book->add_format;
$sheet->merge_range(6, 0, 6, 1, 'unidas', $merged);

my $other = $book->add_worksheet('Vac' . "\x{ed}" . 'a');
my $third = $book->add_worksheet('Otra hoja');
$third->write_string(2, 1, 'Num');
$third->write_string(3, 1, '600000001');
$third->write_string(4, 1, '600000001');
$book->close;
