* Builds the example datasets from their text sources; run at build time in
* the directory that holds the sources:  korvu-xe -b do build_examples.do

* Longley's macroeconomic series 1947-1962, in the integer scaling of the
* certified regression test data
import delimited longley.csv, clear
label variable employed "Total employment (thousands)"
label variable gnpdefl "GNP implicit price deflator (1954 = 100)"
label variable gnp "Gross national product (millions)"
label variable unemployed "Unemployment (thousands x 10)"
label variable armedforces "Size of the armed forces (thousands x 10)"
label variable population "Noninstitutional population 14 and over (thousands)"
label variable year "Year"
label data "Longley's macroeconomic series, 1947-1962"
save longley.dta, replace

* Fisher's iris measurements
import delimited iris.csv, clear case(lower)
rename species species_
generate byte species = 1 if species_ == "setosa"
replace species = 2 if species_ == "versicolor"
replace species = 3 if species_ == "virginica"
drop species_
label define species 1 "setosa" 2 "versicolor" 3 "virginica"
label values species species
label variable sepal_length "Sepal length (cm)"
label variable sepal_width "Sepal width (cm)"
label variable petal_length "Petal length (cm)"
label variable petal_width "Petal width (cm)"
label variable species "Species"
label data "Fisher's iris data"
save iris.dta, replace

* New York air quality, May to September 1973
import delimited airquality.csv, clear case(lower)
rename solar_r solar
label variable ozone "Mean ozone 13:00-15:00 at Roosevelt Island (ppb)"
label variable solar "Solar radiation 08:00-12:00 at Central Park (langleys)"
label variable wind "Mean wind speed 07:00-10:00 at LaGuardia (mph)"
label variable temp "Maximum daily temperature at LaGuardia (degrees F)"
label variable month "Month"
label variable day "Day of month"
label define month 5 "May" 6 "June" 7 "July" 8 "August" 9 "September"
label values month month
label data "New York air quality, May-September 1973"
save airquality.dta, replace

do panel.do
