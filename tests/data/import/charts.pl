# Writes a workbook in which a sheet of its own is a chart, between two with cells, and a chart lies on the
# first of these.
use strict;
use warnings;

my $writer = $ARGV[0] =~ /\.xlsx$/ ? 'Excel::Writer::XLSX' : 'Spreadsheet::WriteExcel';
eval "require $writer" or die $@;
my $book = $writer->new($ARGV[0]) or die "$ARGV[0]: $!";
my $numbers = $book->add_worksheet('Ventas');
$numbers->write_string(0, 0, "Tel\x{e9}fono");
$numbers->write_string(0, 1, 'Importe');
$numbers->write_string($_, 0, 600000000 + $_) for 1 .. 3;
$numbers->write_number($_, 1, 10 * $_) for 1 .. 3;

my $sheet = $book->add_chart(type => 'line', name => 'Curva');
my $within = $book->add_chart(type => 'column', embedded => 1);
$_->add_series(categories => '=Ventas!$A$2:$A$4', values => '=Ventas!$B$2:$B$4') for $sheet, $within;
$numbers->insert_chart('D2', $within);
$numbers->write_string(4, 0, '600000009');

$book->add_worksheet('Clientes')->write_string(0, 0, 'Num');
$book->close;
